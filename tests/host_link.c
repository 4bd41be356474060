/* host_link.c - a host compiled apart from the plug-in, in C, declaring the eight entry points itself: it links and
 * calls each */
#include <string.h>

unsigned int imgInfo(void* info);
unsigned int imgLoadHeader(void* call);
unsigned int imgDecode8(void* call);
unsigned int imgDecode16(void* call);
unsigned int imgDecodef(void* call);
unsigned int imgEncode8(void* call);
unsigned int imgEncode16(void* call);
unsigned int imgEncodef(void* call);

int main(void)
{
    unsigned int (*const refused[])(void*) = {imgLoadHeader, imgDecode8,  imgDecode16, imgDecodef,
                                              imgEncode8,    imgEncode16, imgEncodef};
    unsigned char info[604] = {0};
    const unsigned short hostVersion = 0xA002;
    unsigned int i;
    memcpy(info, &hostVersion, 2);
    if (imgInfo(info) != 1)
        return 1;
    /* A call record that names nothing is refused by every other entry point. */
    for (i = 0; i < sizeof refused / sizeof refused[0]; ++i)
        if (refused[i](0) == 1)
            return 1;
    return 0;
}
