// vk_string_list.cpp - _vkStringList, a list of _vkString<500> grown by one calloc/realloc'd element per append
#include "shared/string/vk_string.h"

#include "shared/string/string_algo.h"

#include <climits>
#include <cstdint>
#include <cstdlib>

namespace {

using Element = _vkString<500>;

// Element copies take the length and the N+1 units, as the list always did.
void copyElement(Element& dst, const Element& src)
{
    std::memcpy(dst.text, src.text, sizeof dst.text);
    dst.length = src.length;
}

// atAsChar gives at most this many characters, one below the element capacity.
constexpr int charTextLimit = 499;

bool blockSizeFits(long long n)
{
    return n >= 0 && static_cast<unsigned long long>(n) <= SIZE_MAX / sizeof(Element);
}

// A zeroed, read-only element: what `at` gives when the list has no element 0,
// so reading it shows an empty string (writing to it is a caller's error that
// faults instead of corrupting memory).
alignas(Element) const unsigned char emptyElement[sizeof(Element)] = {};

} // namespace

_vkStringList::_vkStringList() : count(0), items(nullptr)
{
    std::memset(charBuffer, 0, sizeof charBuffer);
}

_vkStringList::~_vkStringList()
{
    std::free(items);
    items = nullptr;
}

// Failing to grow empties the list; no attempt is made to keep the old elements.
void _vkStringList::append(const _vkString<500>& s, const bool& unique, const bool& caseSensitive)
{
    if (unique && find(s, caseSensitive) >= 0)
        return;
    Element copy; // s may be an element of this list, moved by realloc
    copyElement(copy, s);

    const long long newCount = static_cast<long long>(count) + 1;
    void* block = nullptr;
    if (newCount <= INT_MAX && blockSizeFits(newCount)) {
        const std::size_t n = static_cast<std::size_t>(newCount);
        block = items == nullptr ? std::calloc(n, sizeof(Element))
                                 : std::realloc(static_cast<void*>(items), n * sizeof(Element));
    }
    if (block == nullptr) {
        std::free(items);
        items = nullptr;
        count = 0;
        return;
    }
    items = static_cast<Element*>(block);
    count = static_cast<int>(newCount);
    Element& last = items[count - 1];
    copyElement(last, copy);
    last.reserved = 0;
}

int _vkStringList::find(const _vkString<500>& s, const bool& caseSensitive)
{
    if (items == nullptr)
        return -1;
    for (int i = 0; i < count; ++i)
        if (caseSensitive ? items[i] == s : items[i].isEqual(s))
            return i;
    return -1;
}

// An index outside the list gives element 0, deliberately; callers test count first.
_vkString<500>& _vkStringList::at(const int& i) const
{
    if (count <= 0 || items == nullptr)
        return *reinterpret_cast<Element*>(const_cast<unsigned char*>(emptyElement));
    return items[i < 0 || i >= count ? 0 : i];
}

const char* _vkStringList::atAsChar(const int& i) const
{
    const Element& e = at(i);
    const int used = vkstr::used(e);
    const int n = used < charTextLimit ? used : charTextLimit;
    for (int k = 0; k < n; ++k)
        charBuffer[k] = vkstr::LowByte()(e.text[k]);
    charBuffer[n] = 0;
    return charBuffer;
}

void _vkStringList::copyFrom(const _vkStringList& other)
{
    if (&other == this)
        return;
    std::free(items);
    items = nullptr;
    count = 0;
    if (other.count <= 0 || other.items == nullptr || !blockSizeFits(other.count))
        return;
    const std::size_t n = static_cast<std::size_t>(other.count);
    void* block = std::calloc(n, sizeof(Element));
    if (block == nullptr)
        return;
    std::memcpy(block, other.items, n * sizeof(Element));
    items = static_cast<Element*>(block);
    count = other.count;
}

// Bubble sort with the case-insensitive compare; equal strings keep their order.
void _vkStringList::sort(const bool& descending)
{
    if (items == nullptr)
        return;
    Element held;
    for (int pass = 0; pass <= count - 2; ++pass) {
        for (int j = 0; j < count - 1 - pass; ++j) {
            const int order = items[j].compare(items[j + 1]);
            if (descending ? order < 0 : order > 0) {
                copyElement(held, items[j]);
                copyElement(items[j], items[j + 1]);
                copyElement(items[j + 1], held);
            }
        }
    }
}
