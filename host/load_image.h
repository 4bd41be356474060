// load_image.h - one file's records as a viewer keeps them, and the header call with the partial-load retry
#pragma once

#include <memory>
#include <string>

#include "plugin/records.h"
#include "plugin_library.h"
#include "shared/image/file_buffer.h"
#include "tiff/tiff_header.h"

struct LoadOptions {
    bool headFirst = false;       // load only the first headerBytes bytes for imgLoadHeader
    unsigned int headerBytes = 0; // how much the plug-in asked for in imgInfo
};

// Everything the host keeps for one file between imgLoadHeader and the decode
// call. The plug-in keeps no state, so every file has its own set.
struct ImageFile {
    std::string path;
    std::unique_ptr<vkP::_imgFileBuffer> file; // sized for the whole file, filled as far as loaded
    std::unique_ptr<_imgHeaderInfo> info;
    std::unique_ptr<TiffHeader> tiff;
    unsigned int status = 0; // answer of the last imgLoadHeader
    long long fileBytes = 0;
    long long firstLoad = 0;   // bytes loaded for the first imgLoadHeader
    bool retriedWhole = false; // the first answer was 16, so the whole file was loaded and the call repeated

    std::string text() const; // infoText as it stands, in UTF-8
};

// Reads the file (whole, or its first headerBytes with options.headFirst) and
// calls imgLoadHeader; a partial load answered with 16 is completed and the
// call repeated once. False, with error, only when the file cannot be read or
// held; the plug-in's verdict is image.status.
bool loadHeader(const PluginLibrary& plugin, const std::string& path, const LoadOptions& options, ImageFile& image,
                std::string& error);

// Loads whatever a partial load left out; decoding needs the whole file.
bool loadRest(ImageFile& image, std::string& error);
