// Encodes or decodes Base64: base64 [-d|--decode] [FILE]
//
// Reads the file, or standard input when there is none or it is "-", and writes to standard output.
// Encoded text has lines of 64 characters. When decoding, what is no Base64 is an error; what came
// before it has been written by then.

#include <cstdio>
#include <cstring>
#include <orvabase.h>
#include <unistd.h>

namespace {

/// A descriptor that others opened and will close.
class Descriptor : public OCHandleStream {
public:
    explicit Descriptor(int number) { setHandle(number); }
    ~Descriptor() noexcept override { dropHandle(); }
};

/// Passes on what it is given and remembers a failure, which the coders discard when it comes with
/// their last bytes.
class Checked : public OCStream {
public:
    explicit Checked(OCStream& checked) : stream(checked) {}
    ~Checked() noexcept override = default;

    bool read(void* buffer, unsigned long& count) override { return stream.read(buffer, count); }
    unsigned long seek(long offset, OEStreamSeek origin) override {
        return stream.seek(offset, origin);
    }
    void setSize(unsigned long size) override { stream.setSize(size); }
    bool write(const void* buffer, unsigned long& count) override {
        failed = true;
        const bool taken = stream.write(buffer, count);
        failed = !taken;
        return taken;
    }

    /// Tries nothing again, but says what would have been said.
    void check() {
        if (failed)
            throw OXStream_WriteError();
    }

private:
    OCStream& stream;
    bool failed = false;
};

/// Tells the decoder's tolerance from a text that is Base64: lines may end anywhere with LF or CR
/// LF, padding ends the text, and nothing else may be in it.
class Strict : public OCStream {
public:
    explicit Strict(OCStream& checked) : stream(checked) {}
    ~Strict() noexcept override = default;

    bool read(void* buffer, unsigned long& count) override {
        // What comes behind a mistake is not decoded.
        if (invalid || !stream.read(buffer, count))
            return false;
        const char* const text = static_cast<const char*>(buffer);
        for (unsigned long i = 0; i < count; ++i) {
            if (!accepts(text[i])) {
                invalid = true;
                if (i > 0)
                    count = i;
                return i > 0;
            }
        }
        return true;
    }
    unsigned long seek(long, OEStreamSeek) override { throw OXStream_OperationUnsupported("seek"); }
    void setSize(unsigned long) override { throw OXStream_OperationUnsupported("setSize"); }
    bool write(const void*, unsigned long&) override { return false; }

    bool isValid() const { return !invalid && characters % 4 == 0; }

private:
    bool accepts(char c) {
        if (c == '\n' || c == '\r')
            return true;
        if (c == '=') {
            ++pads;
            ++characters;
            return pads == 1 ? characters % 4 == 3 || characters % 4 == 0
                             : pads == 2 && characters % 4 == 0;
        }
        if (pads == 2 || (pads == 1 && characters % 4 == 3) || decoder.length(&c, 1) == 0)
            return false;
        // Another text may follow a padded one.
        pads = 0;
        ++characters;
        return true;
    }

    OCStream& stream;
    OCBase64Decoder decoder;
    unsigned long characters = 0;
    unsigned int pads = 0;
    bool invalid = false;
};

bool run(OCStream& input, bool decode) {
    Descriptor output(STDOUT_FILENO);
    Checked checked(output);
    if (!decode) {
        OCBase64Encoder().encode(input, checked);
        checked.check();
        return true;
    }
    Strict text(input);
    OCBase64Decoder().decode(text, checked);
    checked.check();
    return text.isValid();
}

} // namespace

int main(int argc, char** argv) {
    bool decode = false;
    const char* file = nullptr;
    bool optionsEnd = false;
    for (int i = 1; i < argc; ++i) {
        const char* const argument = argv[i];
        const bool isOption = !optionsEnd && argument[0] == '-' && argument[1] != 0;
        if (isOption && std::strcmp(argument, "--") == 0)
            optionsEnd = true;
        else if (isOption &&
                 (std::strcmp(argument, "-d") == 0 || std::strcmp(argument, "--decode") == 0))
            decode = true;
        else if (isOption || file != nullptr) {
            std::fprintf(stderr, "usage: %s [-d|--decode] [FILE]\n", argv[0]);
            return 2;
        } else
            file = argument;
    }
    if (file == nullptr)
        file = "-";
    try {
        bool valid = false;
        if (std::strcmp(file, "-") == 0) {
            Descriptor input(STDIN_FILENO);
            valid = run(input, decode);
        } else {
            OCFileStream input(file, FileCreateModeRead, FileShareModeRead);
            valid = run(input, decode);
        }
        if (valid)
            return 0;
        std::fprintf(stderr, "%s: invalid input\n", file);
    } catch (const OXException& failure) {
        std::fprintf(stderr, "%s: %s: %s\n", file, failure.getClass().getString(),
                     failure.getMessage().getString());
    }
    return 1;
}
