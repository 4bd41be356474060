// plugin_info.cpp - imgInfo: the interface-version handshake and the plug-in's description of itself
#include <cstddef>

#include "plugin/entry_points.h"

namespace {

constexpr char tiffFormatName[] = "Tiff";
constexpr char authorCredit[] = "vktiff plug-in authors.";
static_assert(sizeof authorCredit - 1 == 23, "the credit line is 23 characters");
constexpr char tiffPluginVersion[] = "1.0";
constexpr char tiffExtraVersion[] = "0";
constexpr char tiffFileMasks[] = "*.tiff;*.tif;";

constexpr unsigned short tiffPluginKind = 2;
constexpr unsigned char tiffOptionFlag = 0;
constexpr unsigned int tiffHeaderBytes = 2048;     // how much of a file the host loads before imgLoadHeader
constexpr unsigned short tiffCapabilityFlags = 42; // bits 1, 3 and 5

// Writes t unit by unit (each byte widened to 16 bits), then sets the length
// and a 0 unit after the text. The reserved word is the host's and stays.
template <int N, std::size_t L>
void putText(_vkString<N>& s, const char (&t)[L])
{
    constexpr std::size_t len = L - 1;
    static_assert(len <= static_cast<std::size_t>(N), "the text fits the field");
    for (std::size_t i = 0; i < len; ++i)
        s.text[i] = static_cast<unsigned char>(t[i]);
    s.length = static_cast<unsigned short>(len);
    s.text[len] = 0;
}

} // namespace

extern "C" unsigned int imgInfo(_imgPluginInfo* info)
{
    if (info == nullptr)
        return vkStatusVersionMismatch;
    putText(info->libraryVersion, vkVersion);
    putText(info->extraVersion, tiffExtraVersion);
    info->pluginKind = tiffPluginKind;
    putText(info->formatName, tiffFormatName);
    putText(info->author, authorCredit);
    putText(info->pluginVersion, tiffPluginVersion);
    if (info->interfaceVersion != vkInterfaceVersion) {
        // Names and versions are already written; the option flag, header
        // size, masks and capabilities stay as the host had them, so a host
        // of another interface version can still show what it loaded.
        info->interfaceVersion = vkInterfaceVersion;
        return vkStatusVersionMismatch;
    }
    info->interfaceVersion = vkInterfaceVersion;
    info->optionFlag = tiffOptionFlag;
    putText(info->fileMasks, tiffFileMasks);
    info->capabilityFlags = tiffCapabilityFlags;
    info->headerBytes = tiffHeaderBytes;
    return vkStatusOk;
}
