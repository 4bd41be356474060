// lzw_host.h - the LZW decoder's state and functions as a separately built caller declares them
#pragma once

struct LZWState {
    int endOfInput;
    const unsigned char* readPos;
    const unsigned char* readEnd;
    int bitCount;
    unsigned int bitBuffer;
    int mode;
    int codeWidth;
    int codeMask;
    int rootWidth;
    int clearCode;
    int endCode;
    int firstFreeCode;
    int tableLimit;
    int growAt;
    int nextCode;
    int firstChar;
    int prevCode;
    unsigned char* stackTop;
    unsigned char pending[4096];
    unsigned char suffix[4096];
    unsigned short prefix[4096];
    int blockLeft;
    int (*getCode)(LZWState*);
};

int ff_lzw_decode_init(LZWState* s, int rootWidth, unsigned char* input, int size, int mode);
int ff_lzw_decode(LZWState* s, unsigned char* out, int len);
