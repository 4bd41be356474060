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
unsigned int noneTo8(Call& call);                              // strips_none.cpp
unsigned int noneFloatTo8(Call& call);                         // strips_none.cpp
unsigned int lzwTo8(Call& call, unsigned char*& scratch);      // strips_lzw.cpp
unsigned int lzwFloatTo8(Call& call, unsigned char*& scratch); // strips_lzw.cpp
unsigned int packBitsTo8(Call& call);                          // strips_packbits.cpp
unsigned int packBitsFloatTo8(Call& call);                     // strips_packbits.cpp
unsigned int tilesTo8(Call& call, unsigned char*& scratch);    // tiles.cpp (none and LZW)
} // namespace decode8

using FileBuffer = vkP::_imgFileBuffer;
using Target16 = vkP::_imgRGBABuffer16;
using Targetf = vkP::_imgRGBABufferf;
using wide::StripLayout;

// Into 16-bit targets: 16-bit samples as they are.
unsigned int noneTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path);
unsigned int lzwTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path);
unsigned int packBitsTo16(FileBuffer& fb, Target16& target, const TiffHeader& h, const StripLayout& l, DecodePath path);

// Float samples into 16-bit targets (narrowed by the float rule) and into
// float targets (unchanged); Target is Target16 or Targetf.
template <class Target>
unsigned int noneFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l,
                             DecodePath path);
template <class Target>
unsigned int lzwFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l, DecodePath path);
template <class Target>
unsigned int packBitsFloatToWide(FileBuffer& fb, Target& target, const TiffHeader& h, const StripLayout& l,
                                 DecodePath path);
