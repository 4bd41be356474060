// harness_buffer_strings.cpp - operation-sequence harness for the file buffer, the string classes and the string list
#include <cstring>
#include <string>
#include <vector>

#include "fuzz/harness.h"
#include "fuzz/string_ops.h"
#include "shared/image/file_buffer.h"
#include "shared/string/vk_string.h"

namespace vkfuzz {

namespace {

constexpr size_t maxOps = 256;
constexpr size_t maxText = 600; // longer than every capacity used here

// Hands out the argument bytes of one operation; past the input it gives 0.
class Args {
public:
    Args(const uint8_t* data, size_t size) : p_(data), end_(data + size) {}
    bool done() const { return p_ >= end_; }
    uint8_t u8() { return p_ < end_ ? *p_++ : 0; }
    uint16_t u16() { return uint16_t(u8() | u8() << 8); }
    int32_t i32() { return int32_t(uint32_t(u16()) | uint32_t(u16()) << 16); }
    // Small values most of the time, anything 64-bit now and then.
    long long i64()
    {
        const uint8_t kind = u8();
        if (kind < 0xF0)
            return int8_t(kind);
        const long long low = uint32_t(i32());
        return (kind & 1) ? (long long)(uint64_t(uint32_t(i32())) << 32 | uint64_t(low)) : low;
    }
    // A NUL-terminated 8-bit text of up to maxText bytes.
    std::string text()
    {
        std::string s;
        const size_t n = u8() * 3u % maxText;
        for (size_t i = 0; i < n && !done(); ++i)
            s.push_back(char(u8()));
        return std::string(s.c_str());
    }

private:
    const uint8_t* p_;
    const uint8_t* end_;
};

void runFileBuffer(Args& a)
{
    vkP::_imgFileBuffer fb(a.u16());
    if (fb.buffer != nullptr)
        for (long long i = 0; i < fb.bufferSize; ++i)
            fb.buffer[i] = uint8_t(i * 7);
    fb.setFileSize(unsigned(fb.bufferSize));
    fb.setSizeLoaded(fb.bufferSize);
    std::vector<unsigned char> bytes(300);
    for (size_t op = 0; op < maxOps && !a.done(); ++op) {
        const bool big = a.u8() & 1;
        const int pos = a.i32();
        unsigned char u8 = 0;
        signed char s8 = 0;
        unsigned short u16 = 0;
        short s16 = 0;
        unsigned int u32 = 0;
        int s32 = 0;
        float f = 0;
        double d = 0;
        switch (a.u8() % 40) {
        case 0: fb.setFileSize(unsigned(a.i32())); break;
        case 1: fb.setSizeLoaded(a.i64()); break;
        case 2: fb.setBufPosition(a.i64()); break;
        case 3: fb.offsetBufPosition(a.i64()); break;
        case 4: fb.setBufPositionWrite(a.i64(), big); break;
        case 5: fb.readUint8(u8); break;
        case 6: fb.readSint8(s8); break;
        case 7: fb.readUint16(u16, big); break;
        case 8: fb.readSint16(s16, big); break;
        case 9: fb.readUint24(u32, big); break;
        case 10: fb.readUint32(u32, big); break;
        case 11: fb.readSint32(s32, big); break;
        case 12: fb.readfloat(f, big); break;
        case 13: fb.readdouble(d); break;
        case 14: {
            const int n = int(a.u8()) - 20;
            fb.readBuffer(bytes.data(), n);
            break;
        }
        case 15: fb.readUint8P(u8, pos); break;
        case 16: fb.readSint8P(s8, pos); break;
        case 17: fb.readUint16P(u16, pos, big); break;
        case 18: fb.readSint16P(s16, pos, big); break;
        case 19: fb.readUint32P(u32, pos, big); break;
        case 20: fb.readSint32P(s32, pos, big); break;
        case 21: fb.readfloatP(f, pos, big); break;
        case 22: fb.readdoubleP(d, pos); break;
        case 23: {
            const int n = int(a.u8()) - 20;
            fb.readBufferP(bytes.data(), pos, n);
            break;
        }
        case 24: fb.writeUint8(uint8_t(pos)); break;
        case 25: fb.writeSint8(int8_t(pos)); break;
        case 26: fb.writeUint16(uint16_t(pos), big); break;
        case 27: fb.writeSint16(int16_t(pos), big); break;
        case 28: fb.writeUint24(unsigned(pos), big); break;
        case 29: fb.writeUint32(unsigned(pos), big); break;
        case 30: fb.writeSint32(pos, big); break;
        case 31: fb.writefloat(float(pos), big); break;
        case 32: fb.writedouble(double(pos)); break;
        case 33: {
            const int n = int(a.u8()) - 20;
            fb.writeBuffer(bytes.data(), n);
            break;
        }
        case 34: {
            const std::string s = a.text();
            fb.writeString(s.c_str());
            break;
        }
        case 35: fb.readBuffer(nullptr, pos & 15); break;
        case 36: fb.readBufferP(nullptr, 0, pos & 15); break;
        case 37: fb.writeString(nullptr); break;
        case 38: fb.writeBuffer(nullptr, pos & 15); break;
        default: fb.dataBigEndian = big; break;
        }
        fuzzCheck(fb.sizeLoaded >= 0 && fb.bufPosition >= 0, "negative size or position");
    }
}

template <class S>
constexpr int capacityOf = int(sizeof(S::text) / sizeof(S::text[0])) - 1;

// One string object and a list of operations on it (string_ops.h), each with
// two arguments: texts, or numbers small, over the int range or beyond.
template <class S>
void runString(Args& a)
{
    const vkstr::StringOps<S>& ops = vkstr::stringOps<S>();
    const size_t count = ops.asks.size() + ops.edits.size();
    S s;
    for (size_t op = 0; op < maxOps && !a.done(); ++op) {
        const size_t pick = a.u8() % count;
        vkstr::OpArgs args{{""}};
        for (int k = 0; k < 2; ++k) {
            const uint8_t kind = a.u8();
            if (kind < 0x80)
                args.a.push_back(a.text());
            else if (kind < 0xD0)
                args.a.push_back(std::to_string(int8_t(a.u8())));
            else if (kind < 0xF0)
                args.a.push_back(std::to_string(a.i32()));
            else
                args.a.push_back(std::to_string((long long)(uint64_t(uint32_t(a.i32())) << 32 | uint32_t(a.i32()))));
        }
        if (pick < ops.asks.size())
            ops.asks[pick].second(s, args);
        else
            ops.edits[pick - ops.asks.size()].second(s, args);
        fuzzCheck(s.length <= capacityOf<S>, "string length beyond its capacity");
    }
}

void runStringList(Args& a)
{
    _vkStringList list;
    _vkStringList other;
    for (size_t op = 0; op < maxOps && !a.done(); ++op) {
        const std::string t = a.text();
        const _vkString<500> s(t.c_str());
        const bool flag1 = a.u8() & 1;
        const bool flag2 = a.u8() & 1;
        const int i = int(int8_t(a.u8()));
        switch (a.u8() % 7) {
        case 0: list.append(s, flag1, flag2); break;
        case 1: list.find(s, flag1); break;
        case 2:
            if (list.count > 0)
                list.at(i);
            break;
        case 3:
            if (list.count > 0)
                list.atAsChar(i);
            break;
        case 4: other.append(s, flag1, flag2); break;
        case 5: list.copyFrom(other); break;
        default: list.sort(flag1); break;
        }
        fuzzCheck(list.count >= 0 && (list.count == 0) == (list.items == nullptr), "list count and storage disagree");
    }
}

} // namespace

void runBufferStrings(const uint8_t* data, size_t size)
{
    if (size < 1)
        return;
    Args a(data + 1, size - 1);
    switch (data[0] % 8) {
    case 0: runFileBuffer(a); break;
    case 1: runString<_vkString<10>>(a); break;
    case 2: runString<_vkString<250>>(a); break;
    case 3: runString<_vkString8_evenSize<6>>(a); break;
    case 4: runString<_vkString8_evenSize<250>>(a); break;
    case 5: runString<_vkString8_UnevenSize<7>>(a); break;
    case 6: runString<_vkString8_UnevenSize<15>>(a); break;
    default: runStringList(a); break;
    }
}

} // namespace vkfuzz
