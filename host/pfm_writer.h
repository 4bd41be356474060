// pfm_writer.h - float RGB output as a portable float map (PFM)
#pragma once

#include <cstdio>
#include <string>

#include "shared/image/pixel.h"

// Writes the red, green and blue floats of width x height pixels (rows top to
// bottom) as a colour PFM: "PF" header, rows bottom to top, a negative scale
// for little-endian data. Alpha is not stored. False, with error, on failure.
bool writePfm(std::FILE* out, unsigned int width, unsigned int height, const vkP::_Rgbaf* pixels, std::string& error);
