// decode8.cpp - imgDecode8 and its body with a chosen path: chooses the tile or strip decoder, owns the scratch, contains exceptions
#include "plugin/entry_points.h"
#include "tiff/decode8.h"

extern "C" VK_API unsigned int imgDecode8(vkP::_dataIMG_Decode8* call)
{
    return decodeImage8(call, DecodePath::fast);
}

unsigned int decodeImage8(vkP::_dataIMG_Decode8* call, DecodePath path)
{
    // A record without its three parts names nothing to decode.
    if (call == nullptr || call->fileBuffer == nullptr || call->target == nullptr || call->tiffHeader == nullptr)
        return vkStatusUnsupported;
    unsigned char* scratch = nullptr;
    try {
        TiffHeader* header = call->tiffHeader;
        call->fileBuffer->dataBigEndian = header->bigEndian != 0;
        const unsigned int status = header->tileCount != 0 ? imgDecode8_tiles(call, header, scratch, path)
                                                           : imgDecode8_stripes(call, header, scratch, path);
        delete[] scratch;
        return status;
    } catch (...) {
        delete[] scratch;
        scratch = nullptr;
        return vkStatusException;
    }
}
