#include "OCSystemError.h"

#include <cerrno>
#include <cstring>

OCAnsiString systemErrorText(unsigned int code) {
    char buffer[1024];
    const int saved = errno;
    const char* const text = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    errno = saved;
    return text == nullptr ? OCAnsiString() : OCAnsiString(text);
}

OCAnsiString systemErrorText() {
    return systemErrorText(static_cast<unsigned int>(errno));
}
