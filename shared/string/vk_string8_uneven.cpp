// vk_string8_uneven.cpp - _vkString8_UnevenSize<N>, 8-bit text with the length right after the array, for every
// exported odd capacity
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

#define VK_STRING8 _vkString8_UnevenSize
#include "shared/string/vk_string8_core.inc"
#include "shared/string/vk_string8_ops.inc"
#undef VK_STRING8

template class _vkString8_UnevenSize<7>;
template class _vkString8_UnevenSize<15>;
template class _vkString8_UnevenSize<25>;
template class _vkString8_UnevenSize<75>;
template class _vkString8_UnevenSize<125>;
