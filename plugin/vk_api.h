// vk_api.h - export macro: the library builds with hidden visibility, VK_API marks what hosts link against
#pragma once

// On Windows the DLL exports exactly what carries dllexport (with none at all,
// the linker would export every symbol); hosts compile these headers with
// VK_API empty and reach the functions through the import library or
// GetProcAddress. Elsewhere the library's default visibility is hidden.
#if defined(_WIN32)
#if defined(VKTIFF_BUILDING_LIBRARY)
#define VK_API __declspec(dllexport)
#else
#define VK_API
#endif
#else
#define VK_API __attribute__((visibility("default")))
#endif
