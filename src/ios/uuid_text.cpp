#include "ios/uuid_text.h"

#include <cstdio>

namespace {

const int uuidBytes = 16;

bool isFollowedByHyphen(int byte)
{
    return byte == 3 || byte == 5 || byte == 7 || byte == 9;
}

} // namespace

void convterHexFormat(const char *in, char *out)
{
    for (int i = 0; i < uuidBytes; ++i) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02X", static_cast<unsigned char>(in[i]));
        *out++ = digits[0];
        *out++ = digits[1];
        if (isFollowedByHyphen(i))
            *out++ = '-';
    }
    *out = '\0';
}
