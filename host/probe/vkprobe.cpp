// vkprobe.cpp - smallest host: loads the plug-in by path, prints status, text and pixel hashes for every file of a
// folder Usage: vkprobe LIBRARY DIR
//
// Built apart from the library (host/probe/CMakeLists.txt) with the shared
// code compiled in, as a viewer carries it; the plug-in is reached only
// through its entry points, by LoadLibrary/GetProcAddress on Windows and
// dlopen/dlsym elsewhere. Its output names no path and no platform, so the
// same files give the same lines through vktiff.dll and libvktiff.so.
#include <algorithm>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <memory>
#include <string>
#include <vector>

#ifdef _WIN32
#include <fcntl.h>
#include <io.h>
#include <windows.h>
#else
#include <dlfcn.h>
#endif

#include "plugin/entry_points.h"
#include "shared/image/file_buffer.h"
#include "shared/image/rgba_buffer.h"
#include "tiff/tiff_header.h"

namespace {

// The platform shim: the only lines that differ between Windows and Linux.
#ifdef _WIN32
void plainLineEnds()
{
    _setmode(_fileno(stdout), _O_BINARY);
}
void* openLibrary(const char* path)
{
    return reinterpret_cast<void*>(LoadLibraryA(path));
}
void* entry(void* library, const char* name)
{
    return reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(library), name));
}
#else
void plainLineEnds() {}
void* openLibrary(const char* path)
{
    return dlopen(path, RTLD_NOW | RTLD_LOCAL);
}
void* entry(void* library, const char* name)
{
    return dlsym(library, name);
}
#endif

struct Entries {
    unsigned int (*info)(_imgPluginInfo*);
    unsigned int (*loadHeader)(_dataIMG_Header*);
    unsigned int (*decode8)(vkP::_dataIMG_Decode8*);
    unsigned int (*decode16)(vkP::_dataIMG_Decode16*);
    unsigned int (*decodef)(vkP::_dataIMG_Decodef*);
};

template <class Function>
bool find(void* library, const char* name, Function& out)
{
    out = reinterpret_cast<Function>(entry(library, name));
    if (out == nullptr)
        std::printf("no entry point %s\n", name);
    return out != nullptr;
}

template <int N>
std::string text(const _vkString<N>& s)
{
    std::string out;
    for (int i = 0; i < s.length && i < N; ++i) {
        const unsigned short c = s.text[i];
        if (c >= 0x20 && c < 0x7f) {
            out += static_cast<char>(c);
        } else {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", c);
            out += escaped;
        }
    }
    return out;
}

// FNV-1a, 64-bit, over the decoded pixel records.
unsigned long long hash(const vkP::_imgRGBABuffer_all& rgba)
{
    unsigned long long h = 14695981039346656037ull;
    const unsigned long long bytes = 1ull * rgba.pixelCount * static_cast<unsigned int>(rgba.bytesPerPixel);
    for (unsigned long long i = 0; i < bytes; ++i)
        h = (h ^ rgba.pixels[i]) * 1099511628211ull;
    return h;
}

// One file as a viewer loads it: all of it in a file buffer.
struct File {
    std::unique_ptr<vkP::_imgFileBuffer> buffer;
    std::unique_ptr<_imgHeaderInfo> info = std::make_unique<_imgHeaderInfo>();
    std::unique_ptr<TiffHeader> tiff = std::make_unique<TiffHeader>();
};

unsigned int loadHeader(const Entries& e, const std::vector<char>& bytes, File& file)
{
    const auto size = static_cast<unsigned int>(bytes.size());
    file.buffer = std::make_unique<vkP::_imgFileBuffer>(size);
    std::copy(bytes.begin(), bytes.end(), file.buffer->buffer);
    file.buffer->setFileSize(size);
    file.buffer->setSizeLoaded(size);
    _dataIMG_Header call{file.buffer.get(), file.info.get(), file.tiff.get()};
    return e.loadHeader(&call);
}

// Decodes into a zeroed buffer of the image's size with a freshly parsed
// header; prints the status and the hash of every pixel.
template <class Buffer, class Record>
void decode(const Entries& e, unsigned int (*entryPoint)(Record*), const char* name, const std::vector<char>& bytes)
{
    File file;
    if (loadHeader(e, bytes, file) != vkStatusOk)
        return;
    const unsigned int width = file.info->width;
    const unsigned int height = file.info->height;
    Buffer rgba(width * height);
    rgba.setWidth(static_cast<int>(width));
    rgba.setHeight(static_cast<int>(height));
    rgba.alpha = file.info->hasAlpha;
    std::memset(rgba.pixels, 0, 1ull * rgba.pixelCount * static_cast<unsigned int>(rgba.bytesPerPixel));
    Record call{file.buffer.get(), &rgba, file.tiff.get()};
    const unsigned int status = entryPoint(&call);
    std::printf("  %s: status %u, pixels %016llx\n", name, status, hash(rgba));
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::fprintf(stderr, "usage: vkprobe LIBRARY DIR\n");
        return 2;
    }
    plainLineEnds();
    void* library = openLibrary(argv[1]);
    if (library == nullptr) {
        std::printf("cannot load %s\n", argv[1]);
        return 1;
    }
    Entries e{};
    if (!find(library, "imgInfo", e.info) || !find(library, "imgLoadHeader", e.loadHeader) ||
        !find(library, "imgDecode8", e.decode8) || !find(library, "imgDecode16", e.decode16) ||
        !find(library, "imgDecodef", e.decodef))
        return 1;

    auto plugin = std::make_unique<_imgPluginInfo>();
    plugin->interfaceVersion = vkInterfaceVersion;
    const unsigned int infoStatus = e.info(plugin.get());
    std::printf("imgInfo: status %u, \"%s\", \"%s\", header bytes %u, masks \"%s\"\n", infoStatus,
                text(plugin->formatName).c_str(), text(plugin->pluginVersion).c_str(), plugin->headerBytes,
                text(plugin->fileMasks).c_str());

    std::vector<std::filesystem::path> files;
    for (const auto& item : std::filesystem::directory_iterator(argv[2]))
        if (item.path().extension() == ".tif")
            files.push_back(item.path());
    std::sort(files.begin(), files.end());
    for (const auto& path : files) {
        std::ifstream in(path, std::ios::binary);
        const std::vector<char> bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
        File file;
        const unsigned int status = loadHeader(e, bytes, file);
        std::printf("%s: status %u, %u x %u, %u bits, alpha %u, \"%s\"\n", path.filename().string().c_str(), status,
                    file.info->width, file.info->height, file.info->bitsPerChannel, file.info->hasAlpha,
                    text(file.info->infoText).c_str());
        if (status != vkStatusOk)
            continue;
        decode<vkP::_imgRGBABuffer8>(e, e.decode8, "imgDecode8", bytes);
        if (file.info->bitsPerChannel != 8)
            decode<vkP::_imgRGBABuffer16>(e, e.decode16, "imgDecode16", bytes);
        if (file.info->bitsPerChannel == 32)
            decode<vkP::_imgRGBABufferf>(e, e.decodef, "imgDecodef", bytes);
    }
    return 0;
}
