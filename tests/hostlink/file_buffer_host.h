// file_buffer_host.h - the file buffer and plug-in buffer as a separately built host declares them
#pragma once

namespace vkP {

class _imgFileBuffer {
public:
    unsigned char* buffer;
    long long bufferSize;
    long long sizeLoaded;
    long long fileSize;
    long long bufPosition;
    bool dataBigEndian;

    _imgFileBuffer(unsigned int size);
    ~_imgFileBuffer();

    bool setFileSize(unsigned int size);
    void setSizeLoaded(long long n);
    bool setBufPosition(const long long& p);
    bool offsetBufPosition(long long d);
    bool setBufPositionWrite(const long long& p, bool extend);

    bool readUint8(unsigned char& v);
    bool readSint8(signed char& v);
    bool readUint16(unsigned short& v, const bool& bigEndian);
    bool readSint16(short& v, const bool& bigEndian);
    bool readUint24(unsigned int& v, const bool& bigEndian);
    bool readUint32(unsigned int& v, const bool& bigEndian);
    bool readSint32(int& v, const bool& bigEndian);
    bool readfloat(float& v, const bool& bigEndian);
    bool readdouble(double& v);
    bool readBuffer(unsigned char* dest, const int& n);

    bool readUint8P(unsigned char& v, const int& pos);
    bool readSint8P(signed char& v, const int& pos);
    bool readUint16P(unsigned short& v, const int& pos, const bool& bigEndian);
    bool readSint16P(short& v, const int& pos, const bool& bigEndian);
    bool readUint32P(unsigned int& v, const int& pos, const bool& bigEndian);
    bool readSint32P(int& v, const int& pos, const bool& bigEndian);
    bool readfloatP(float& v, const int& pos, const bool& bigEndian);
    bool readdoubleP(double& v, const int& pos);
    bool readBufferP(unsigned char* dest, const int& pos, const int& n);

    bool writeUint8(const unsigned char& v);
    bool writeSint8(const signed char& v);
    bool writeUint16(unsigned short v, const bool& bigEndian);
    bool writeSint16(short v, const bool& bigEndian);
    bool writeUint24(unsigned int v, const bool& bigEndian);
    bool writeUint32(unsigned int v, const bool& bigEndian);
    bool writeSint32(int v, const bool& bigEndian);
    bool writefloat(float v, const bool& bigEndian);
    bool writedouble(const double& v);
    bool writeBuffer(unsigned char* src, const int& n);
    bool writeString(const char* s);
};

class _imgPluginBuffer {
public:
    unsigned char data[1];
    bool readfromFileBuffer(_imgFileBuffer* fb, const short& size);
};

} // namespace vkP
