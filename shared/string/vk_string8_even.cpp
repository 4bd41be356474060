// vk_string8_even.cpp - _vkString8_evenSize<N>, 8-bit text with a pad byte before the length, for every exported even
// capacity
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

#define VK_STRING8 _vkString8_evenSize
#include "shared/string/vk_string8_core.inc"
#include "shared/string/vk_string8_ops.inc"
#undef VK_STRING8

template class _vkString8_evenSize<6>;
template class _vkString8_evenSize<8>;
template class _vkString8_evenSize<10>;
template class _vkString8_evenSize<12>;
template class _vkString8_evenSize<14>;
template class _vkString8_evenSize<30>;
template class _vkString8_evenSize<40>;
template class _vkString8_evenSize<50>;
template class _vkString8_evenSize<100>;
template class _vkString8_evenSize<150>;
template class _vkString8_evenSize<200>;
template class _vkString8_evenSize<250>;
template class _vkString8_evenSize<500>;
template class _vkString8_evenSize<1000>;
template class _vkString8_evenSize<3000>;
