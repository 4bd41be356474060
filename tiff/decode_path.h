// decode_path.h - the choice between a decoder's plain path and its fast paths, and the entries that take it
#pragma once

#include "plugin/records.h"

// Every decoder has one plain path that follows the rules step by step, and
// fast paths beside it, each taken only where a named precondition holds and
// giving the same pixels, file-buffer position and status. The exported entry
// points always pass `fast`. Tests and the fuzz target reach these functions
// through the static build of the library sources (target vktiff_static) and
// run both paths on the same input to prove them equal; there is no global
// switch.
enum class DecodePath { plain, fast };

// The bodies of imgDecode8, imgDecode16 and imgDecodef, same records and
// statuses, with the path chosen by the caller.
unsigned int decodeImage8(vkP::_dataIMG_Decode8* call, DecodePath path);
unsigned int decodeImage16(vkP::_dataIMG_Decode16* call, DecodePath path);
unsigned int decodeImagef(vkP::_dataIMG_Decodef* call, DecodePath path);
