// Prints files as hexadecimal digits, in lines of 24 bytes: hexdump [FILE…]
//
// Reads standard input when there is no file, and for a file "-".

#include <cstdio>
#include <cstring>
#include <orvabase.h>
#include <unistd.h>

namespace {

/// The stream's bytes; standard input cannot tell its size, so none is asked.
void readAll(OCStream& input, OCMemoryStream& bytes) {
    OCStreamTransfer transfer;
    transfer.useSource(input);
    transfer.useTarget(bytes);
    transfer.execute();
}

void dump(const char* file) {
    OCMemoryStream bytes;
    if (std::strcmp(file, "-") == 0) {
        OCHandleStream input;
        input.setHandle(STDIN_FILENO);
        try {
            readAll(input, bytes);
        } catch (...) {
            input.dropHandle();
            throw;
        }
        input.dropHandle();
    } else {
        OCFileStream input(file, FileCreateModeRead, FileShareModeRead);
        readAll(input, bytes);
    }
    if (bytes.isEmpty())
        return;
    OCHexDump hexDump;
    hexDump.setLineSeparator("\n");
    const OCMemoryBuffer data = bytes.makeBuffer();
    OCAnsiString text = hexDump.dumpMultipleLines(data.getData(), data.getSize());
    text.append('\n');
    if (std::fwrite(text.getString(), 1, text.getLength(), stdout) != text.getLength())
        throw OXStream_WriteError();
}

} // namespace

int main(int argc, char** argv) {
    for (int i = 1; i < argc; ++i) {
        if (argv[i][0] == '-' && argv[i][1] != 0) {
            std::fprintf(stderr, "usage: %s [FILE...]\n", argv[0]);
            return 2;
        }
    }
    int status = 0;
    for (int i = 1; i < argc || i == 1; ++i) {
        const char* const file = argc == 1 ? "-" : argv[i];
        try {
            dump(file);
            if (std::fflush(stdout) != 0)
                throw OXStream_WriteError();
        } catch (const OXException& failure) {
            std::fprintf(stderr, "%s: %s: %s\n", file, failure.getClass().getString(),
                         failure.getMessage().getString());
            status = 1;
        }
    }
    return status;
}
