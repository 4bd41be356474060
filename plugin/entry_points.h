// entry_points.h - the eight exported C entry points; each takes one host-owned record and returns a status
#pragma once

#include "plugin/records.h"
#include "plugin/status.h"

extern "C" {

// Handshake. 1 when info->interfaceVersion is vkInterfaceVersion and the whole
// description was written; 5 otherwise (names and versions written, the
// version field overwritten, the rest untouched).
VK_API unsigned int imgInfo(_imgPluginInfo* info);

// Parses the TIFF header and first directory into call->tiffHeader and
// call->headerInfo. 1, or 4, 6, 12, 15, 16 with the reason in infoText.
VK_API unsigned int imgLoadHeader(_dataIMG_Header* call);

// Decode into the host's RGBA buffer. 1, or 4, 6, 7, 14. Pixels written before
// a failure stay; the scratch allocated inside is freed on every return.
VK_API unsigned int imgDecode8(vkP::_dataIMG_Decode8* call);
VK_API unsigned int imgDecode16(vkP::_dataIMG_Decode16* call);
VK_API unsigned int imgDecodef(vkP::_dataIMG_Decodef* call);

// Writing is not offered: always 4, the argument is never looked at.
VK_API unsigned int imgEncode8(void* call);
VK_API unsigned int imgEncode16(void* call);
VK_API unsigned int imgEncodef(void* call);

} // extern "C"
