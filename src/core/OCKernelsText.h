#ifndef ORVABASE_OCKERNELSTEXT_H
#define ORVABASE_OCKERNELSTEXT_H

// Vector code for whole operations of the narrow string: finding every occurrence of a text, and
// URL form. As elsewhere, nothing is read or written outside the runs that are given.

namespace orvabase::kernels {

/// Finds a pattern's occurrences from `start` on, from the left and without overlaps. Stores the
/// places of up to `room` of them and returns how many these are: when less than `room`, there are
/// no more. Linear in text and pattern together.
unsigned long findTexts(const char* text, unsigned long count, const char* pattern,
                        unsigned long patternCount, unsigned long start, unsigned long* places,
                        unsigned long room) noexcept;

/// How many characters URL form spells with `%` and two digits: all but letters, digits, `-`, `_`
/// and the space.
unsigned long countEscaped(const char* text, unsigned long count) noexcept;
/// Writes the URL form of `from`, which is two characters longer for each of `countEscaped`.
void escape(char* to, const char* from, unsigned long count) noexcept;
/// Writes the text whose URL form is `from` to another place with room for `count` characters, all
/// of which may be changed. Returns its length.
unsigned long unescape(char* to, const char* from, unsigned long count) noexcept;

/// Which of up to 64 characters mean something in a query: bit `i` says that character `i` is `&`,
/// `=`, `%` or `+`.
unsigned long markQuery(const char* text, unsigned long count) noexcept;

} // namespace orvabase::kernels

#endif
