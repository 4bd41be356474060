// png_writer.h - RGBA PNG output through libpng
#pragma once

#include <cstdio>
#include <string>

// Writes an RGBA PNG of bitDepth 8 or 16 bits per channel. pixels: height rows
// of width pixels, four channels each, 16-bit channels in host byte order.
// False, with libpng's message in error, on failure.
bool writePng(std::FILE* out, unsigned int width, unsigned int height, int bitDepth, const void* pixels,
              std::string& error);
