#ifndef ORVABASE_OCHEXDUMP_H
#define ORVABASE_OCHEXDUMP_H

#include "OCAnsiString.h"

/// Renders memory as lower-case hexadecimal digits, on one line or on several.
///
/// Different threads may dump with the same object as long as none changes its settings.
///
///     OCHexDump dump;
///     dump.dumpSingleLine("\x00\xab\xff", 3);      // 00:ab:ff
///     dump.setByteSeparator("");
///     dump.setLineLength(8);
///     dump.dumpMultipleLines("0123456789", 10);    // 30313233 CR LF 34353637 CR LF 3839
class ORVABASE_EXPORT OCHexDump : public OCObject {
public:
    /// Bytes are separated by ":", lines by CR LF, and lines have up to 72 characters.
    OCHexDump();
    ~OCHexDump() noexcept override;

    /// Set what stands between two bytes and between two lines.
    /// @throws OXMemory_AllocationError; the old separator is kept then.
    void setByteSeparator(const OCAnsiString& text);
    void setLineSeparator(const OCAnsiString& text);
    /// Sets how many characters a line may have, the separators of bytes included.
    void setLineLength(unsigned long n) noexcept { lineLength = n; }

    /// The `size` bytes at `data`, two digits each, with separators between. Empty when `data` is
    /// null or `size` is 0. Linear; one allocation.
    /// @throws OXMemory_AllocationError
    OCAnsiString dumpSingleLine(const void* data, unsigned long size) const;
    /// The same in lines. A byte goes to the next line when it would not fit on its own with the
    /// separator that follows it: so the separator of two bytes stays at the end of a broken line.
    ///
    /// Note: a byte that is too long for any line, with its separator, stands on a line of its own,
    /// and the first such byte is preceded by a line separator as well.
    /// @throws OXMemory_AllocationError
    OCAnsiString dumpMultipleLines(const void* data, unsigned long size) const;

private:
    char* writeBytes(char* to, const char* bytes, unsigned long count) const;
    char* writeLines(char* to, const char* bytes, unsigned long lines, unsigned long perLine) const;

    OCAnsiString byteSeparator;
    OCAnsiString lineSeparator;
    unsigned long lineLength;
};

#endif
