// load_header.cpp - imgLoadHeader: TIFF header and first directory into TiffHeader, checks and the one-line description
#include <cstdint>
#include <cstdio>

#include "plugin/entry_points.h"
#include "shared/image/file_buffer.h"
#include "shared/string/vk_string.h"
#include "tiff/tiff_header.h"

namespace {

constexpr unsigned short tiffVersion = 42;
constexpr unsigned int planarSeparate = 2;
constexpr unsigned int minChannels = 3;
constexpr unsigned int alphaChannels = 4;

enum TiffTag : unsigned short {
    tagImageWidth = 256,
    tagImageLength = 257,
    tagBitsPerSample = 258,
    tagCompression = 259,
    tagStripOffsets = 273,
    tagOrientation = 274,
    tagSamplesPerPixel = 277,
    tagRowsPerStrip = 278,
    tagStripByteCounts = 279,
    tagPlanarConfiguration = 284,
    tagPredictor = 317,
    tagTileWidth = 322,
    tagTileLength = 323,
    tagTileOffsets = 324,
    tagTileByteCounts = 325,
};
constexpr unsigned short typeShort = 3;

constexpr char textStart[] = "Tiff ";
constexpr char textMac[] = " Mac";
constexpr char textLZW[] = " LZW";
constexpr char textRLE[] = " RLE";
constexpr char textUncompressed[] = " UnCompr.";
constexpr char textRGB[] = " RGB";
constexpr char textRGBA[] = " RGBA";
constexpr char textRGBAPlus[] = " RGBA+";
constexpr char textPredict[] = " predict";
constexpr char errByteOrder[] = " ERR: Unknown Byte Order!";
constexpr char errVersion[] = " ERR: Wrong file version!";
constexpr char errFileSize[] = " ERR: File size too small!";
constexpr char errBufferSize[] = " ERR: File buffer too small!";
constexpr char errFieldCount[] = " ERR: too many header fields!";
constexpr char errPlanar[] = " ERR: channels not saved as interleaved!";
constexpr char errCompression[] = " ERR: Unknown Compression #";
constexpr char errCompressionEnd[] = " !";
constexpr char errChannels[] = " ERR: unsupported number of channels!";
constexpr char errDepth[] = " ERR: unsupported Bits per Pixel!";

inline bool supportedDepth(unsigned int bitsPerSample)
{
    return bitsPerSample == 8 || bitsPerSample == 16 || bitsPerSample == 32;
}

// Every read converts from the byte order set on the buffer.
constexpr bool machineOrder = false;

inline uint32_t byteReversed(uint32_t v)
{
    return v >> 24 | (v >> 8 & 0xFF00u) | (v << 8 & 0xFF0000u) | v << 24;
}

// Positions the buffer at a 32-bit file offset; a failed positioning leaves
// the read position where it was.
inline bool seek(vkP::_imgFileBuffer& fb, uint32_t offset)
{
    const long long position = offset;
    return fb.setBufPosition(position);
}

// Tags the reader acts on. Reads inside the walk are not checked: a value
// that cannot be read keeps what the field held.
void applyEntry(vkP::_imgFileBuffer& fb, TiffHeader& th, const TiffDirEntry& e)
{
    switch (e.tag) {
    case tagImageWidth: th.imageWidth = e.value; break;
    case tagImageLength: th.imageLength = e.value; break;
    case tagBitsPerSample:
        // Only the first sample's depth is read; a count of 1 or 2 keeps the
        // low half of the value field, which in a big-endian file is not where
        // the SHORT sits.
        if (e.count > 2) {
            seek(fb, e.value);
            fb.readUint16(th.bitsPerSample, machineOrder);
        } else {
            th.bitsPerSample = (unsigned short)e.value;
        }
        break;
    case tagCompression: th.compression = e.value; break;
    case tagStripOffsets:
        th.stripCount = e.count;
        th.stripOffsetsField = e.value;
        break;
    case tagOrientation: th.orientation = e.value; break;
    case tagSamplesPerPixel: th.samplesPerPixel = e.value; break;
    case tagRowsPerStrip:
        if (e.count <= 1) {
            th.rowsPerStrip = e.value;
        } else if (e.type == typeShort) {
            unsigned short rows = 0;
            seek(fb, e.value);
            fb.readUint16(rows, machineOrder);
            th.rowsPerStrip = rows;
        } else {
            seek(fb, e.value);
            fb.readUint32(th.rowsPerStrip, machineOrder);
        }
        break;
    case tagStripByteCounts:
        th.stripByteCountsField = e.value;
        // A single strip's byte count of a big-endian file is kept
        // byte-reversed; hosts and decoders see it that way.
        if (e.count <= 1 && th.bigEndian)
            th.stripByteCountsField = byteReversed(th.stripByteCountsField);
        break;
    case tagPlanarConfiguration: th.planarConfiguration = e.value; break;
    case tagPredictor: th.predictor = e.value; break;
    case tagTileWidth: th.tileWidth = e.value; break;
    case tagTileLength: th.tileLength = e.value; break;
    case tagTileOffsets: th.tileOffsetsField = e.value; break;
    case tagTileByteCounts: th.tileByteCountsField = e.value; break;
    default: break;
    }
}

// Reads `count` 32-bit offsets and byte counts from the two arrays into the
// strip arrays. Element positions wrap in 32 bits like the file's offsets.
void readChunkArrays(vkP::_imgFileBuffer& fb, TiffHeader& th, uint32_t offsetsAt, uint32_t countsAt, uint32_t count)
{
    for (uint32_t i = 0; i < count; ++i) {
        seek(fb, offsetsAt + 4 * i);
        fb.readUint32(th.stripOffsets[i], machineOrder);
        seek(fb, countsAt + 4 * i);
        fb.readUint32(th.stripByteCounts[i], machineOrder);
    }
}

unsigned int parse(vkP::_imgFileBuffer& fb, _imgHeaderInfo& info, TiffHeader& th)
{
    _vkString<250>& text = info.infoText;
    text = textStart;

    // The host leaves the position at the start of the file; going there
    // anyway lets a buffer that was read before be parsed again.
    const long long fileStart = 0;
    fb.setBufPosition(fileStart);
    unsigned char mark[2] = {0, 0};
    fb.readBuffer(mark, 2);
    if (mark[0] == 'I' && mark[1] == 'I') {
        th.bigEndian = 0;
    } else if (mark[0] == 'M' && mark[1] == 'M') {
        th.bigEndian = 1;
        text.add(textMac);
    } else {
        th.bigEndian = 0;
        text.add(errByteOrder);
        return vkStatusUnsupported;
    }
    fb.dataBigEndian = th.bigEndian != 0;

    fb.readUint16(th.version, machineOrder);
    if (th.version != tiffVersion) {
        text.add(errVersion);
        return vkStatusUnsupported;
    }
    fb.readUint32(th.ifdOffset, machineOrder);
    if ((long long)th.ifdOffset > fb.fileSize) {
        text.add(errFileSize);
        return vkStatusFileTooShort;
    }
    if (!seek(fb, th.ifdOffset)) {
        text.add(errBufferSize);
        return vkStatusBufferTooShort;
    }
    fb.readUint16(th.entryCount, machineOrder);
    if (th.entryCount > maxDirEntries) {
        text.add(errFieldCount);
        return vkStatusUnsupported;
    }

    // Only these start from 0; compression, samples, depth, orientation and
    // the strip and tile value fields keep what the storage held when the
    // file has no such tag.
    th.imageWidth = 0;
    th.imageLength = 0;
    th.predictor = 0;
    th.rowsPerStrip = 0;
    th.tileWidth = 0;
    th.tileCount = 0;
    th.planarConfiguration = 0;
    th.stripCount = 0;

    for (unsigned int i = 0; i < th.entryCount; ++i) {
        TiffDirEntry& e = th.entries[i];
        fb.readUint16(e.tag, machineOrder);
        fb.readUint16(e.type, machineOrder);
        fb.readUint32(e.count, machineOrder);
        fb.readUint32(e.value, machineOrder);
    }
    fb.readUint32(th.nextIfdOffset, machineOrder);
    for (unsigned int i = 0; i < th.entryCount; ++i)
        applyEntry(fb, th, th.entries[i]);

    // A warning only: the samples are then read as if interleaved.
    if (th.planarConfiguration == planarSeparate)
        text.add(errPlanar);

    // Big-endian files are read as if these six tags were SHORTs, whose value
    // sits in the upper half of the field; a LONG there is misread, as hosts
    // have always seen it.
    if (th.bigEndian) {
        th.imageWidth >>= 16;
        th.imageLength >>= 16;
        th.compression >>= 16;
        th.samplesPerPixel >>= 16;
        th.predictor >>= 16;
        th.rowsPerStrip >>= 16;
    }

    info.width = th.imageWidth;
    info.height = th.imageLength;
    info.bitsPerChannel = (unsigned char)th.bitsPerSample;

    if (th.rowsPerStrip == 0 && th.tileWidth == 0)
        return vkStatusUnsupported;

    // Offsets wrap in 32 bits, as the fields they are made of.
    if (fb.sizeLoaded != fb.fileSize) {
        const uint32_t arrayBytes = 4 * th.stripCount;
        const bool countsLoaded = seek(fb, th.stripByteCountsField + arrayBytes);
        const bool offsetsLoaded = seek(fb, th.stripOffsetsField + arrayBytes);
        if (!countsLoaded || !offsetsLoaded) {
            text.add(errBufferSize);
            return vkStatusBufferTooShort;
        }
    }

    if (th.tileWidth != 0) {
        if (th.tileLength == 0)
            return vkStatusUnsupported;
        // Rounding-up divisions and the product wrap in 32 bits.
        th.tilesAcross = (th.tileWidth + th.imageWidth - 1) / th.tileWidth;
        th.tilesDown = (th.tileLength + th.imageLength - 1) / th.tileLength;
        th.tileCount = th.tilesAcross * th.tilesDown;
        if (th.tileCount > maxStrips)
            return vkStatusTooManyStrips;
        readChunkArrays(fb, th, th.tileOffsetsField, th.tileByteCountsField, th.tileCount);
    } else if (th.stripCount <= 1) {
        th.stripOffsets[0] = th.stripOffsetsField;
        th.stripByteCounts[0] = th.stripByteCountsField;
    } else {
        // The product wraps in 32 bits.
        if (th.stripCount * th.rowsPerStrip < th.imageLength)
            return vkStatusFileTooShort;
        if (th.stripCount > maxStrips)
            return vkStatusTooManyStrips;
        readChunkArrays(fb, th, th.stripOffsetsField, th.stripByteCountsField, th.stripCount);
    }

    if (th.rowsPerStrip == 0)
        th.rowsPerStrip = th.imageLength;

    switch (th.compression) {
    case tiffCompressionLZW: text.add(textLZW); break;
    case tiffCompressionPackBits: text.add(textRLE); break;
    case tiffCompressionNone:
        text.add(textUncompressed);
        info.isUncompressed = 1;
        break;
    default: {
        text.add(errCompression);
        // Shown as a signed number, as hosts have always shown it.
        _vkString8_UnevenSize<15> number;
        std::snprintf(number.text, sizeof number.text, "%d", int(th.compression));
        number.calcLength();
        text.add(number.text);
        text.add(errCompressionEnd);
        return vkStatusUnsupported;
    }
    }

    if (th.samplesPerPixel < minChannels) {
        text.add(errChannels);
        return vkStatusUnsupported;
    }
    if (th.samplesPerPixel == minChannels) {
        text.add(textRGB);
        info.hasAlpha = 0;
    } else if (th.samplesPerPixel == alphaChannels) {
        text.add(textRGBA);
        info.hasAlpha = 1;
    } else {
        text.add(textRGBAPlus);
        info.hasAlpha = 1;
    }

    if (!supportedDepth(th.bitsPerSample)) {
        text.add(errDepth);
        return vkStatusUnsupported;
    }
    if (th.predictor == tiffPredictorHorizontal)
        text.add(textPredict);

    if (th.compression == tiffCompressionNone) {
        // Computed in 32 bits and allowed to wrap, deliberately not widened:
        // oversized images pass or fail this test as they always have.
        const uint32_t dataBytes = (th.imageWidth * th.imageLength * th.samplesPerPixel * th.bitsPerSample) >> 3;
        if (uint32_t(fb.fileSize) < dataBytes) {
            text.add(errFileSize);
            return vkStatusFileTooShort;
        }
    }
    return vkStatusOk;
}

} // namespace

unsigned int imgLoadHeader(_dataIMG_Header* call)
{
    // A record without its three parts names nothing to parse.
    if (call == nullptr || call->fileBuffer == nullptr || call->headerInfo == nullptr || call->tiffHeader == nullptr)
        return vkStatusUnsupported;
    try {
        return parse(*call->fileBuffer, *call->headerInfo, *call->tiffHeader);
    } catch (...) {
        return vkStatusException;
    }
}
