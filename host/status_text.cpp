// status_text.cpp - meanings of the plug-in's status codes
#include "status_text.h"

#include "plugin/status.h"

const char* statusMeaning(unsigned int status)
{
    switch (status) {
    case vkStatusOk: return "ok";
    case vkStatusUnsupported: return "not a TIFF this plug-in reads";
    case vkStatusVersionMismatch: return "interface version mismatch";
    case vkStatusException: return "exception inside the plug-in";
    case vkStatusNoMemory: return "plug-in out of memory";
    case vkStatusFileTooShort: return "file shorter than its header says";
    case vkStatusCorruptData: return "strip or tile data not decodable";
    case vkStatusTooManyStrips: return "more than 10000 strips or tiles";
    case vkStatusBufferTooShort: return "too little of the file loaded";
    default: return "unknown status";
    }
}

std::string statusMessage(unsigned int status, const std::string& text)
{
    std::string message = std::string(statusMeaning(status)) + " (status " + std::to_string(status) + ")";
    if (!text.empty())
        message += ": " + text;
    return message;
}
