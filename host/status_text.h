// status_text.h - what each plug-in status code means, for the host's messages
#pragma once

#include <string>

// Short meaning of a status code, e.g. "not a TIFF this plug-in reads" for 4.
const char* statusMeaning(unsigned int status);

// "<meaning> (status N)", followed by ": <text>" when text is not empty.
std::string statusMessage(unsigned int status, const std::string& text);
