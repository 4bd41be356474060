// load_image.cpp - fills the file buffer from disk and runs imgLoadHeader, completing a partial load on status 16
#include "load_image.h"

#include <sys/stat.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "host_limits.h"
#include "host_text.h"
#include "plugin/status.h"

namespace {

struct FileCloser {
    void operator()(std::FILE* f) const { std::fclose(f); }
};
using FileHandle = std::unique_ptr<std::FILE, FileCloser>;

std::string systemError(const std::string& what, const std::string& path)
{
    return "cannot " + what + " " + path + ": " + std::strerror(errno);
}

bool fileSize(std::FILE* f, const std::string& path, long long& size, std::string& error)
{
    struct stat about {};
    if (fstat(fileno(f), &about) != 0) {
        error = systemError("measure", path);
        return false;
    }
    if (!S_ISREG(about.st_mode)) {
        error = path + " is not a regular file";
        return false;
    }
    size = about.st_size;
    return true;
}

// Loads bytes [from, to) of the file into the buffer and extends sizeLoaded.
bool loadRange(ImageFile& image, long long from, long long to, std::string& error)
{
    if (from >= to)
        return true;
    FileHandle f(std::fopen(image.path.c_str(), "rb"));
    if (!f || fseeko(f.get(), from, SEEK_SET) != 0) {
        error = systemError("read", image.path);
        return false;
    }
    const size_t wanted = static_cast<size_t>(to - from);
    if (std::fread(image.file->buffer + from, 1, wanted, f.get()) != wanted) {
        error = "cannot read " + image.path + ": the file changed or could not be read";
        return false;
    }
    image.file->setSizeLoaded(to);
    return true;
}

unsigned int callLoadHeader(const PluginLibrary& plugin, ImageFile& image)
{
    image.info = std::make_unique<_imgHeaderInfo>();
    *image.tiff = TiffHeader{};
    image.file->setBufPosition(0);
    _dataIMG_Header call{image.file.get(), image.info.get(), image.tiff.get()};
    return plugin.entries().loadHeader(&call);
}

} // namespace

std::string ImageFile::text() const
{
    return info ? hostText(info->infoText) : std::string();
}

bool loadHeader(const PluginLibrary& plugin, const std::string& path, const LoadOptions& options, ImageFile& image,
                std::string& error)
{
    if (!plugin.require(reinterpret_cast<const void*>(plugin.entries().loadHeader), "imgLoadHeader", error))
        return false;
    image = ImageFile{};
    image.path = path;
    {
        FileHandle f(std::fopen(path.c_str(), "rb"));
        if (!f) {
            error = systemError("open", path);
            return false;
        }
        if (!fileSize(f.get(), path, image.fileBytes, error))
            return false;
    }
    if (image.fileBytes > maxFileBytes) {
        error = path + ": file too large for the plug-in (" + std::to_string(image.fileBytes) + " bytes)";
        return false;
    }
    const unsigned int size = static_cast<unsigned int>(image.fileBytes);
    image.file = std::make_unique<vkP::_imgFileBuffer>(size);
    if (image.file->bufferSize != image.fileBytes) {
        error = path + ": cannot allocate " + std::to_string(size) + " bytes for the file";
        return false;
    }
    image.file->setFileSize(size);
    image.tiff = std::make_unique<TiffHeader>();

    image.firstLoad = image.fileBytes;
    if (options.headFirst && options.headerBytes < image.fileBytes)
        image.firstLoad = options.headerBytes;
    if (!loadRange(image, 0, image.firstLoad, error))
        return false;
    image.status = callLoadHeader(plugin, image);

    if (image.status == vkStatusBufferTooShort && image.firstLoad < image.fileBytes) {
        if (!loadRest(image, error))
            return false;
        image.retriedWhole = true;
        image.status = callLoadHeader(plugin, image);
    }
    return true;
}

bool loadRest(ImageFile& image, std::string& error)
{
    return loadRange(image, image.file->sizeLoaded, image.fileBytes, error);
}
