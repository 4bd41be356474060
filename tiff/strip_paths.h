// strip_paths.h - every decode path, by layout, codec and target depth: what the entries' dispatch tables call
#pragma once

#include "plugin/records.h"
#include "tiff/rows8.h"
#include "tiff/strip_loops_wide.h"

// Each path decodes every strip (or tile) of the first directory into the
// target and returns vkStatusOk, or vkStatusUnsupported, vkStatusNoMemory or
// vkStatusCorruptData; pixels written before a failure stay. "Float" paths
// read 32-bit float samples, the others 8- or 16-bit integer samples. Each
// takes its fast form where the call's path is DecodePath::fast and the
// precondition of that form (decode_path.h) holds.

// Into 8-bit targets. The LZW paths allocate `scratch` and free it again
// before they return; the entry frees what an exception leaves behind.
namespace decode8 {
unsigned int noneTo8(Call& call);                                   // strips_none.cpp
unsigned int noneFloatTo8(Call& call);                              // strips_none.cpp
unsigned int lzwTo8(Call& call, unsigned char*& scratch);           // strips_lzw.cpp
unsigned int lzwFloatTo8(Call& call, unsigned char*& scratch);      // strips_lzw.cpp
unsigned int packBitsTo8(Call& call);                               // strips_packbits.cpp
unsigned int packBitsFloatTo8(Call& call);                          // strips_packbits.cpp
unsigned int tilesTo8(Call& call, unsigned char*& scratch);         // tiles.cpp (none and LZW)
} // namespace decode8

// Into 16-bit targets: 16-bit samples as they are, floats narrowed.
unsigned int noneTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                      const wide::StripLayout& l, DecodePath path);
unsigned int noneFloatTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                           const wide::StripLayout& l, DecodePath path);
unsigned int lzwTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                     const wide::StripLayout& l, DecodePath path);
unsigned int lzwFloatTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                          const wide::StripLayout& l, DecodePath path);
unsigned int packBitsTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                          const wide::StripLayout& l);
unsigned int packBitsFloatTo16(vkP::_imgFileBuffer& fb, vkP::_imgRGBABuffer16& target, const TiffHeader& h,
                               const wide::StripLayout& l);

// Into float targets: float samples unchanged.
unsigned int noneFloatTof(vkP::_imgFileBuffer& fb, vkP::_imgRGBABufferf& target, const TiffHeader& h,
                          const wide::StripLayout& l, DecodePath path);
unsigned int lzwFloatTof(vkP::_imgFileBuffer& fb, vkP::_imgRGBABufferf& target, const TiffHeader& h,
                         const wide::StripLayout& l, DecodePath path);
unsigned int packBitsFloatTof(vkP::_imgFileBuffer& fb, vkP::_imgRGBABufferf& target, const TiffHeader& h,
                              const wide::StripLayout& l);
