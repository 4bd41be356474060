// vk_string16.cpp - _vkString<N>, the fixed-capacity string of 16-bit units, for every exported capacity
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

#include "shared/string/vk_string16_core.inc"
#include "shared/string/vk_string16_ops.inc"

template class _vkString<10>;
template class _vkString<25>;
template class _vkString<30>;
template class _vkString<48>;
template class _vkString<50>;
template class _vkString<75>;
template class _vkString<100>;
template class _vkString<125>;
template class _vkString<150>;
template class _vkString<200>;
template class _vkString<225>;
template class _vkString<250>;
template class _vkString<500>;
template class _vkString<1000>;
template class _vkString<2500>;
