// plugin_buffer.cpp - _imgPluginBuffer: a host byte block filled from a file buffer
#include "plugin/records.h"
#include "shared/image/file_buffer.h"

namespace vkP {

// A missing file buffer is treated like a count below 1: nothing is read.
bool _imgPluginBuffer::readfromFileBuffer(_imgFileBuffer* fb, const short& size)
{
    if (size < 1 || fb == nullptr)
        return false;
    return fb->readBuffer(data, size);
}

} // namespace vkP
