// vk_api.h - export macro: the library builds with hidden visibility, VK_API marks what hosts link against
#pragma once

#define VK_API __attribute__((visibility("default")))
