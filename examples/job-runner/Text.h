#ifndef JOB_RUNNER_TEXT_H
#define JOB_RUNNER_TEXT_H

#include <orvabase.h>

/// Whether an XML document can hold the text: UTF-8 without control bytes other than tabs and line
/// ends.
bool isText(const OCAnsiString& text);

/// The text on one line that a terminal shows as it is: control bytes and those that are not UTF-8
/// become `\x1b`.
OCAnsiString visible(const OCAnsiString& text);

/// Puts `isText` text into the form that the content of an element needs.
OCAnsiString escapeContent(const OCAnsiString& text);

/// Puts any text into the form that the value of an attribute needs, made visible first.
OCAnsiString escapeAttribute(const OCAnsiString& text);

/// Replaces XML's character and entity references by what they stand for, as UTF-8.
/// @throws OXJobRunner_BadFile for a reference that is none.
OCAnsiString resolveReferences(const OCAnsiString& text);

/// Reads a whole number from `least` to `most`; false for any other text.
bool parseNumber(const OCAnsiString& text, unsigned int least, unsigned int most,
                 unsigned int& number);

/// Reads seconds such as `2` or `0.25`, from 0.001 to 999999; false for any other text.
bool parseSeconds(const OCAnsiString& text, unsigned int& milliseconds);

/// Seconds with three decimals.
OCAnsiString formatSeconds(unsigned int milliseconds);

/// A date and a time of day, as `2016-01-02 03:04:05`.
OCAnsiString formatTime(const OCDateTime& time);

/// The time since the stopwatch was started. The wall clock may have been set back: 0 then.
unsigned int elapsedMilliseconds(const OCStopwatch& stopwatch);

/// A new random identifier (RFC 4122, version 4).
OCUniqueIdentifier makeIdentifier();

OCAnsiString number(unsigned long value);

#endif
