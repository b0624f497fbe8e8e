#ifndef ORVABASE_OCSTRINGUTILITIES_H
#define ORVABASE_OCSTRINGUTILITIES_H

#include "OCAnsiString.h"

class OCStream;

/// Moves whole strings to and from streams and puts parentheses or quotes about a text.
///
/// The operations keep no state.
///
///     OCAnsiString text = OCStringUtilities::importStream(input);
///     OCStringUtilities::exportStream(text, output);
///     OCStringUtilities::addQuotes("My Files", false);   // "My Files", with the quotes
class ORVABASE_EXPORT OCStringUtilities : public OCObject {
public:
    OCStringUtilities() = delete;

    /// Writes the bytes of `text` at the stream's position, with one `writeBuffer`; an empty text
    /// does not touch the stream.
    /// @throws OXStream_WriteError and whatever the stream throws.
    static void exportStream(const OCAnsiString& text, OCStream& stream);
    /// The rest of the stream, from its position to its end.
    ///
    /// It reads at most 8192 bytes at a time until a read returns false; a read that returns true
    /// with no bytes counts as the end, too. The size of the stream is not asked for.
    /// @throws OXMemory_AllocationError and whatever the stream throws.
    static OCAnsiString importStream(OCStream& stream);
    /// `text` between `(` and `)`, if it contains a space or `always` is true; otherwise `text`.
    /// @throws OXMemory_AllocationError
    static OCAnsiString addParentheses(const OCAnsiString& text, bool always);
    /// `text` between double quotes, if it contains a space or `always` is true; otherwise `text`.
    ///
    /// Note: quotes inside the text stay as they are.
    /// @throws OXMemory_AllocationError
    static OCAnsiString addQuotes(const OCAnsiString& text, bool always);
};

#endif
