// decode_entry.cpp - imgDecode8, imgDecode16 and imgDecodef: one frame for the three, and each entry's dispatch table
#include "plugin/entry_points.h"
#include "tiff/strip_paths.h"

namespace {

// The frame of every decode entry: a record without its three parts names
// nothing to decode; `dispatch(header, scratch)` chooses and runs a path.
// The scratch of the 8-bit LZW paths belongs to the frame, so that an
// exception anywhere frees it; the 16-bit and float paths keep theirs on
// their own stack. Any exception becomes vkStatusException.
template <class Record, class Dispatch>
unsigned int runDecode(Record* call, Dispatch&& dispatch)
{
    if (call == nullptr || call->fileBuffer == nullptr || call->target == nullptr || call->tiffHeader == nullptr)
        return vkStatusUnsupported;
    unsigned char* scratch = nullptr;
    try {
        const unsigned int status = dispatch(*call->tiffHeader, scratch);
        delete[] scratch;
        return status;
    } catch (...) {
        delete[] scratch;
        return vkStatusException;
    }
}

// Hands the header's byte order to the file buffer, so that every later
// read of the file swaps exactly for big-endian files.
template <class Record>
void useHeaderByteOrder(Record* call)
{
    call->fileBuffer->dataBigEndian = call->tiffHeader->bigEndian != 0;
}

} // namespace

unsigned int decodeImage8(vkP::_dataIMG_Decode8* record, DecodePath path)
{
    return runDecode(record, [&](TiffHeader& h, unsigned char*& scratch) -> unsigned int {
        using namespace decode8;
        useHeaderByteOrder(record);
        const bool integer = isIntegerDepth(h.bitsPerSample);
        // Tiled float images and tiled PackBits are not read.
        if (h.tileCount != 0) {
            if (!integer)
                return vkStatusUnsupported;
            Call call = makeCall(*record, h, path);
            return tilesTo8(call, scratch);
        }
        Call call = makeCall(*record, h, path);
        switch (h.compression) {
        case tiffCompressionLZW:
            if (integer)
                return lzwTo8(call, scratch);
            return h.bitsPerSample == 32 ? lzwFloatTo8(call, scratch) : vkStatusUnsupported;
        case tiffCompressionPackBits: return integer ? packBitsTo8(call) : packBitsFloatTo8(call);
        case tiffCompressionNone: return integer ? noneTo8(call) : noneFloatTo8(call);
        default: return vkStatusUnsupported;
        }
    });
}

unsigned int decodeImage16(vkP::_dataIMG_Decode16* record, DecodePath path)
{
    return runDecode(record, [&](TiffHeader& h, unsigned char*&) -> unsigned int {
        if (h.tileCount != 0)
            return vkStatusUnsupported;
        useHeaderByteOrder(record);
        vkP::_imgFileBuffer& fb = *record->fileBuffer;
        vkP::_imgRGBABuffer16& target = *record->target;
        const wide::StripLayout l = wide::stripLayout(h, target.alpha);
        const unsigned int bits = h.bitsPerSample;
        // 8-bit sources belong to imgDecode8: success without a pixel written.
        switch (h.compression) {
        case tiffCompressionLZW:
            if (bits == 8)
                return vkStatusOk;
            if (bits == 16)
                return lzwTo16(fb, target, h, l, path);
            return bits == 32 ? lzwFloatToWide(fb, target, h, l, path) : vkStatusUnsupported;
        case tiffCompressionPackBits:
            if (bits == 8)
                return vkStatusOk;
            return bits == 16 ? packBitsTo16(fb, target, h, l, path) : packBitsFloatToWide(fb, target, h, l, path);
        case tiffCompressionNone:
            if (bits == 8)
                return vkStatusOk;
            return bits == 16 ? noneTo16(fb, target, h, l, path) : noneFloatToWide(fb, target, h, l, path);
        default: return vkStatusUnsupported;
        }
    });
}

unsigned int decodeImagef(vkP::_dataIMG_Decodef* record, DecodePath path)
{
    return runDecode(record, [&](TiffHeader& h, unsigned char*&) -> unsigned int {
        if (h.tileCount != 0)
            return vkStatusUnsupported;
        useHeaderByteOrder(record);
        vkP::_imgFileBuffer& fb = *record->fileBuffer;
        vkP::_imgRGBABufferf& target = *record->target;
        const unsigned int c = h.compression;
        if (c != tiffCompressionLZW && c != tiffCompressionPackBits && c != tiffCompressionNone)
            return vkStatusUnsupported;
        const unsigned int bits = h.bitsPerSample;
        // 8- and 16-bit sources are not widened here: success without a pixel written.
        if (bits == 8 || bits == 16)
            return vkStatusOk;
        const wide::StripLayout l = wide::stripLayout(h, target.alpha);
        if (c == tiffCompressionLZW)
            return bits == 32 ? lzwFloatToWide(fb, target, h, l, path) : vkStatusUnsupported;
        return c == tiffCompressionPackBits ? packBitsFloatToWide(fb, target, h, l, path)
                                            : noneFloatToWide(fb, target, h, l, path);
    });
}

extern "C" VK_API unsigned int imgDecode8(vkP::_dataIMG_Decode8* call)
{
    return decodeImage8(call, DecodePath::fast);
}

extern "C" VK_API unsigned int imgDecode16(vkP::_dataIMG_Decode16* call)
{
    return decodeImage16(call, DecodePath::fast);
}

extern "C" VK_API unsigned int imgDecodef(vkP::_dataIMG_Decodef* call)
{
    return decodeImagef(call, DecodePath::fast);
}
