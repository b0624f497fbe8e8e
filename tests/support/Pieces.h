#ifndef ORVABASE_TESTS_PIECES_H
#define ORVABASE_TESTS_PIECES_H

#include "OCStream.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <utility>
#include <vector>

/// A stream that repeats pieces without holding the whole document.
class Pieces : public OCStream {
public:
    struct Piece {
        std::string text;
        unsigned long times;
    };
    explicit Pieces(std::vector<Piece> content) : pieces(std::move(content)) {}

    bool read(void* buffer, unsigned long& count) override {
        if (count == 0)
            return true;
        auto* to = static_cast<char*>(buffer);
        unsigned long copied = 0;
        while (copied < count && index < pieces.size()) {
            const Piece& piece = pieces[index];
            if (repetition == piece.times) {
                ++index;
                repetition = 0;
                continue;
            }
            const unsigned long n = std::min(count - copied, piece.text.size() - offset);
            // NOLINTNEXTLINE(bugprone-not-null-terminated-result)
            std::memcpy(to + copied, piece.text.data() + offset, n);
            copied += n;
            offset += n;
            if (offset == piece.text.size()) {
                offset = 0;
                ++repetition;
            }
        }
        position += copied;
        count = copied;
        return copied > 0;
    }
    unsigned long seek(long, OEStreamSeek origin) override {
        return origin == StreamSeekEnd && index < pieces.size() ? ~0UL : position;
    }
    void setSize(unsigned long) override {}
    bool write(const void*, unsigned long&) override { return false; }

private:
    std::vector<Piece> pieces;
    unsigned long index = 0;
    unsigned long repetition = 0;
    unsigned long offset = 0;
    unsigned long position = 0;
};

#endif
