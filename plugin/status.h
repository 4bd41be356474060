// status.h - status codes returned by the exported entry points
#pragma once

constexpr unsigned int vkStatusOk = 1;              // success
constexpr unsigned int vkStatusUnsupported = 4;     // not a TIFF this plug-in reads, or operation not offered
constexpr unsigned int vkStatusVersionMismatch = 5; // host interface version differs (imgInfo)
constexpr unsigned int vkStatusException = 6;       // an exception was caught inside the entry point
constexpr unsigned int vkStatusNoMemory = 7;        // the scratch buffer could not be allocated
constexpr unsigned int vkStatusFileTooShort = 12;   // the file is shorter than its header says
constexpr unsigned int vkStatusCorruptData = 14;    // strip or tile data not decodable
constexpr unsigned int vkStatusTooManyStrips = 15;  // more than maxStrips strips or tiles
constexpr unsigned int vkStatusBufferTooShort = 16; // too little of the file is loaded in the buffer
