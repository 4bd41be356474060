// tiff_header.h - the parsed first image directory that imgLoadHeader leaves in host storage
#pragma once

constexpr int maxDirEntries = 40; // fixed capacity of TiffHeader::entries
constexpr int maxStrips = 10000;  // fixed capacity of the strip/tile offset and byte-count arrays

// One directory entry as the file holds it.
struct TiffDirEntry {
    unsigned short tag;
    unsigned short type;
    unsigned int count;
    unsigned int value; // value-or-offset field, read as one number in the file's byte order
};

// Plain record without pointers; the host owns its storage and keeps it from
// imgLoadHeader to the decode call. Valid for decoding only after status 1.
struct TiffHeader {
    unsigned char bigEndian; // 1 for "MM"
    unsigned short version;
    unsigned int ifdOffset;
    unsigned short entryCount;
    TiffDirEntry entries[maxDirEntries];
    unsigned int nextIfdOffset; // stored, never followed
    unsigned int imageWidth;
    unsigned int imageLength;
    unsigned short bitsPerSample; // first sample's depth
    unsigned int samplesPerPixel;
    unsigned int compression;
    unsigned int predictor;
    unsigned int stripByteCountsField;
    unsigned int rowsPerStrip;
    unsigned int orientation;
    unsigned int stripCount;
    unsigned int stripOffsetsField;
    unsigned int stripOffsets[maxStrips];    // strip offsets, or tile offsets of a tiled image
    unsigned int stripByteCounts[maxStrips]; // strip or tile byte counts
    unsigned int tileWidth;                  // 0: stored in strips
    unsigned int tileLength;
    unsigned int tileOffsetsField;
    unsigned int tileByteCountsField;
    unsigned int tilesAcross;
    unsigned int tilesDown;
    unsigned int tileCount; // 0 for strips
    unsigned int planarConfiguration;
};

constexpr unsigned int tiffCompressionNone = 1;
constexpr unsigned int tiffCompressionLZW = 5;
constexpr unsigned int tiffCompressionPackBits = 32773;
constexpr unsigned int tiffPredictorHorizontal = 2;
