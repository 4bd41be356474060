// records.h - the records that cross the plug-in boundary, shared with hosts by binary layout
#pragma once

#include <cstddef>

#include "plugin/vk_api.h"
#include "shared/string/vk_string.h"

struct TiffHeader;

namespace vkP {
class _imgFileBuffer;
class _imgRGBABuffer8;
class _imgRGBABuffer16;
class _imgRGBABufferf;
} // namespace vkP

// Library-wide version text of the shared support code; imgInfo reports it.
constexpr char vkVersion[] = " 7.0.27";

// The plug-in description that imgInfo fills.
struct _imgPluginInfo {
    unsigned short interfaceVersion; // in: the host's version; out: always vkInterfaceVersion
    unsigned short pluginKind;
    _vkString<50> formatName;
    _vkString<100> author;
    _vkString<25> pluginVersion;
    _vkString<25> libraryVersion;
    _vkString<25> extraVersion;
    unsigned char optionFlag;
    unsigned char reserved[7];
    unsigned int headerBytes; // how much of a file the host should load before imgLoadHeader
    _vkString<50> fileMasks;  // "*.tiff;*.tif;"
    unsigned short capabilityFlags;
};

constexpr unsigned short vkInterfaceVersion = 0xA002;

// The image description that imgLoadHeader fills. The plug-in never touches
// the reserved bytes; infoText only ever grows by appended words and messages.
struct _imgHeaderInfo {
    unsigned short reserved[2];
    unsigned int width;
    unsigned int height;
    unsigned char hasAlpha;       // 1 for four or more samples per pixel
    unsigned char bitsPerChannel; // low 8 bits of BitsPerSample
    unsigned char isUncompressed; // set to 1 for compression none, never cleared
    unsigned char reserved2;
    _vkString<250> infoText;
};

// Call record of imgLoadHeader; every pointer is host-owned.
struct _dataIMG_Header {
    vkP::_imgFileBuffer* fileBuffer;
    _imgHeaderInfo* headerInfo;
    TiffHeader* tiffHeader; // filled here, kept by the host for the decode call
};

namespace vkP {

// Call records of the decode entries: file, target buffer, the parsed header.
struct _dataIMG_Decode8 {
    _imgFileBuffer* fileBuffer;
    _imgRGBABuffer8* target;
    TiffHeader* tiffHeader;
};

struct _dataIMG_Decode16 {
    _imgFileBuffer* fileBuffer;
    _imgRGBABuffer16* target;
    TiffHeader* tiffHeader;
};

struct _dataIMG_Decodef {
    _imgFileBuffer* fileBuffer;
    _imgRGBABufferf* target;
    TiffHeader* tiffHeader;
};

// A byte block of host-chosen size that the host fills from a file buffer.
class VK_API _imgPluginBuffer {
public:
    unsigned char data[1]; // first byte of the host's storage

    // Copies size bytes from the file buffer's read position to data; false
    // (nothing read) for size < 1 or when fewer bytes are loaded.
    bool readfromFileBuffer(_imgFileBuffer* fb, const short& size);
};

} // namespace vkP

static_assert(sizeof(_imgPluginInfo) == 604, "plug-in description layout");
static_assert(offsetof(_imgPluginInfo, interfaceVersion) == 0, "layout");
static_assert(offsetof(_imgPluginInfo, pluginKind) == 2, "layout");
static_assert(offsetof(_imgPluginInfo, formatName) == 4, "layout");
static_assert(offsetof(_imgPluginInfo, author) == 110, "layout");
static_assert(offsetof(_imgPluginInfo, pluginVersion) == 316, "layout");
static_assert(offsetof(_imgPluginInfo, libraryVersion) == 372, "layout");
static_assert(offsetof(_imgPluginInfo, extraVersion) == 428, "layout");
static_assert(offsetof(_imgPluginInfo, optionFlag) == 484, "layout");
static_assert(offsetof(_imgPluginInfo, headerBytes) == 492, "layout");
static_assert(offsetof(_imgPluginInfo, fileMasks) == 496, "layout");
static_assert(offsetof(_imgPluginInfo, capabilityFlags) == 602, "layout");
static_assert(offsetof(_imgHeaderInfo, width) == 4, "layout");
static_assert(offsetof(_imgHeaderInfo, height) == 8, "layout");
static_assert(offsetof(_imgHeaderInfo, hasAlpha) == 12, "layout");
static_assert(offsetof(_imgHeaderInfo, bitsPerChannel) == 13, "layout");
static_assert(offsetof(_imgHeaderInfo, isUncompressed) == 14, "layout");
static_assert(offsetof(_imgHeaderInfo, infoText) == 16, "layout");
static_assert(sizeof(_imgHeaderInfo) == 524, "image description layout");
static_assert(sizeof(_dataIMG_Header) == 3 * sizeof(void*), "call record: three pointers");
static_assert(sizeof(vkP::_dataIMG_Decode8) == 3 * sizeof(void*), "call record: three pointers");
static_assert(sizeof(vkP::_dataIMG_Decode16) == 3 * sizeof(void*), "call record: three pointers");
static_assert(sizeof(vkP::_dataIMG_Decodef) == 3 * sizeof(void*), "call record: three pointers");
