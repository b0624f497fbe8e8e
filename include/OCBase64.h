#ifndef ORVABASE_OCBASE64_H
#define ORVABASE_OCBASE64_H

#include "OCStreamReader.h"
#include "OCStreamWriter.h"

/// Reads a stream in the encoder's blocks of 3 bytes, through an `OCStreamReader`.
///
///     OCBase64EncoderReader reader(stream);
///     char block[3];
///     while (unsigned int count = reader.readBlock(block))
///         use(block, count);
class ORVABASE_EXPORT OCBase64EncoderReader : public OCObject {
public:
    /// A reader of `source`, which stays the caller's and must outlive it.
    /// @throws OXMemory_AllocationError (so do the constructors of the other three).
    explicit OCBase64EncoderReader(OCStream& source);
    ~OCBase64EncoderReader() noexcept override;

    /// Reads up to 3 bytes and returns how many: less than 3 only at the end of the data.
    ///
    /// Exceptions of the stream pass through; the bytes of the block read until then are lost.
    unsigned int readBlock(char* block);

private:
    friend class OCBase64Encoder;

    OCStreamReader reader;
};

/// Writes the encoder's blocks of 4 characters in lines, through an `OCStreamWriter`. What is
/// waiting is written when the adapter goes; failures of that are discarded.
///
///     OCBase64EncoderWriter writer(stream);
///     char block[] = {'T', 'W', 'F', 'u'};
///     writer.writeBlock(block);
class ORVABASE_EXPORT OCBase64EncoderWriter : public OCObject {
public:
    /// A writer to `target`, which stays the caller's and must outlive it.
    explicit OCBase64EncoderWriter(OCStream& target);
    ~OCBase64EncoderWriter() noexcept override;

    /// Writes the 4 characters, and CR LF when a line of 64 is full.
    /// @throws OXStream_WriteError; exceptions of the stream pass through.
    void writeBlock(const char* block);

private:
    friend class OCBase64Encoder;

    OCStreamWriter writer;
    unsigned int lineLength;
};

/// Encodes bytes as Base64 (RFC 4648, with padding) in lines of 64 characters.
///
/// An encoder holds nothing; one serves any number of threads.
///
///     OCMemoryStream bytes("Man", 3);
///     OCMemoryStream text;
///     OCBase64Encoder().encode(bytes, text);
///     text.makeString();   // TWFu
class ORVABASE_EXPORT OCBase64Encoder : public OCObject {
public:
    OCBase64Encoder() noexcept = default;
    ~OCBase64Encoder() noexcept override;

    /// Encodes all bytes from the position of `source` to its end, and writes the text to `target`.
    /// Each line of 64 characters is followed by CR LF; a last line that is shorter is not. No
    /// bytes give no text. Linear; two allocations, whatever the size.
    ///
    /// The streams see 4096 bytes asked for, or written, at a time.
    ///
    /// Note: what waits to be written at the end is written as the adapters go, so a failure of
    /// that last write is discarded. When an exception leaves, the source is put back to behind the
    /// last block that was encoded (if it can seek), and the text that was waiting is tried once
    /// more.
    /// @throws OXStream_WriteError, OXMemory_AllocationError; exceptions of the streams pass
    /// through.
    void encode(OCStream& source, OCStream& target);

    /// Encode 1, 2 or 3 bytes as the 4 characters of a group: `M` as `TQ==`, `Ma` as `TWE=`, `Man`
    /// as `TWFu`. `in` and `out` must not overlap.
    void encode1(const char* in, char* out) const noexcept;
    void encode2(const char* in, char* out) const noexcept;
    void encode3(const char* in, char* out) const noexcept;

private:
    static void encodeRun(OCBase64EncoderReader& reader, OCBase64EncoderWriter& writer);
};

/// Reads a stream in the decoder's blocks of 4 characters, through an `OCStreamReader`.
///
///     OCMemoryStream stream("TW\r\nFu", 6);
///     OCBase64DecoderReader reader(stream);
///     char block[4];
///     reader.readBlock(block);   // 4: TWFu
class ORVABASE_EXPORT OCBase64DecoderReader : public OCObject {
public:
    /// A reader of `source`, which stays the caller's and must outlive it.
    explicit OCBase64DecoderReader(OCStream& source);
    ~OCBase64DecoderReader() noexcept override;

    /// Reads up to 4 characters and returns how many: less than 4 only at the end of the data.
    /// Control characters (0 to 31) and bytes from 128 to 255 are passed over.
    ///
    /// Note: a space is not passed over.
    ///
    /// Exceptions of the stream pass through; the characters of the block read until then are lost.
    unsigned int readBlock(char* block);

private:
    friend class OCBase64Decoder;

    OCStreamReader reader;
};

/// Writes the decoder's bytes, through an `OCStreamWriter`. What is waiting is written when the
/// adapter goes; failures of that are discarded.
///
///     OCBase64DecoderWriter writer(stream);
///     writer.writeBlock("Man", 3);
class ORVABASE_EXPORT OCBase64DecoderWriter : public OCObject {
public:
    /// A writer to `target`, which stays the caller's and must outlive it.
    explicit OCBase64DecoderWriter(OCStream& target);
    ~OCBase64DecoderWriter() noexcept override;

    /// Writes `count` bytes.
    /// @throws OXStream_WriteError; exceptions of the stream pass through.
    void writeBlock(const char* block, unsigned int count);

private:
    friend class OCBase64Decoder;

    OCStreamWriter writer;
};

/// Decodes Base64 (RFC 4648), in lines or not. It is tolerant: no input is an error.
///
/// A decoder is not changed by decoding; one serves any number of threads.
///
///     OCMemoryStream text("TWFu\r\nTWE=", 10);
///     OCMemoryStream bytes;
///     OCBase64Decoder().decode(text, bytes);
///     bytes.makeString();   // ManMa
class ORVABASE_EXPORT OCBase64Decoder : public OCObject {
public:
    OCBase64Decoder() noexcept;
    ~OCBase64Decoder() noexcept override;

    /// Decodes blocks of 4 characters from the position of `source` on and writes the bytes to
    /// `target`. Control characters and bytes from 128 to 255 count as absent. A block is cut
    /// before its first character that is not of the alphabet: what is left decodes to one byte
    /// less than it has characters, and decoding goes on with the next block. It ends with the
    /// data, or with a block of which less than 2 characters are left. Linear; two allocations,
    /// whatever the size.
    ///
    /// The source is left behind the last character of the block that ended decoding. The streams
    /// see 4096 bytes asked for, or written, at a time.
    ///
    /// Note: so `TWE=TWFu` decodes to `MaMan`, `TW uTWFu` to `MMan` and `=AAA` to nothing. What
    /// waits to be written at the end is written as the adapters go, so a failure of that last
    /// write is discarded; when an exception leaves, it is tried once more.
    /// @throws OXStream_WriteError, OXMemory_AllocationError; exceptions of the streams pass
    /// through.
    void decode(OCStream& source, OCStream& target);

    /// How many of the `count` characters stand before the first one that is not of the alphabet.
    unsigned int length(const char* block, unsigned int count) const noexcept;

    /// Decode 2, 3 or 4 characters of the alphabet to 1, 2 or 3 bytes. `in` and `out` must not
    /// overlap.
    void decode2(const char* in, char* out) const noexcept;
    void decode3(const char* in, char* out) const noexcept;
    void decode4(const char* in, char* out) const noexcept;

protected:
    /// Build the table of the characters' values.
    void initialize() noexcept;
    void initializeMatrix() noexcept;
    void initializeMatrixUnknown() noexcept;
    void initializeMatrixAlphabet() noexcept;
    void initializeMatrixPad() noexcept;

private:
    unsigned int valueOf(char c) const noexcept { return matrix[static_cast<unsigned char>(c)]; }
    static void decodeRun(OCBase64DecoderReader& reader, OCBase64DecoderWriter& writer);

    unsigned char matrix[256];
};

#endif
