#ifndef ORVABASE_MARKUPREADER_H
#define ORVABASE_MARKUPREADER_H

namespace orvabase {

/// The operations that the readers of narrow and of wide markup have in common. `buffer` is the
/// reader's own, which the reader's `growBuffer` fills.
template<typename Cursor>
struct MarkupReader {
    using Reader = typename Cursor::Reader;
    using String = typename Cursor::String;
    using Character = typename Cursor::Character;

    static bool preview(Reader& reader, const String& buffer, Character& c) {
        if (!reader.growBuffer(1))
            return false;
        c = *buffer.getString();
        return true;
    }

    /// Removes `count` characters, at least 1, or all when there are less.
    static void skip(Reader& reader, String& buffer, unsigned long count) {
        if (reader.growBuffer(count))
            buffer.remove(0, count);
        else
            buffer.clear();
    }

    static bool find(Reader& reader, Character c, String* skipped) {
        return collect(reader, skipped, [c](Cursor& cursor) { return cursor.find(c); });
    }

    // NOLINTNEXTLINE(misc-no-recursion): once, with a copy
    static bool find(Reader& reader, const String& s, String* skipped) {
        if (&s == skipped)
            return find(reader, String(s), skipped);
        return collect(reader, skipped,
                       [&s](Cursor& cursor) { return cursor.find(s.getString(), s.getLength()); });
    }

private:
    /// Runs a search and appends what it passes over to `skipped`, if that is asked for.
    template<class Search>
    static bool collect(Reader& reader, String* skipped, const Search& search) {
        Cursor cursor(reader, Cursor::Shared);
        if (skipped)
            cursor.beginToken(*skipped, skipped->getLength());
        const bool found = search(cursor);
        if (skipped)
            cursor.endToken();
        return found;
    }
};

} // namespace orvabase

#endif
