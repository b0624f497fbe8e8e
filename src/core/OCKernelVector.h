// The kernels, once for every register width. There is no guard, on purpose: each form includes
// this in its own unnamed namespace, behind OCKernelLanes.h.

// NOLINTNEXTLINE(misc-definitions-in-headers): in an unnamed namespace, as said above
constexpr unsigned long bytesPerRegister = sizeof(Register);

/// How many characters before the next place where a register can be loaded with alignment; a whole
/// register's worth when the address is aligned.
template<class Character>
KERNEL_INLINE unsigned long untilAligned(const Character* p) {
    return (bytesPerRegister - reinterpret_cast<unsigned long>(p) % bytesPerRegister) /
           sizeof(Character);
}

KERNEL_INLINE unsigned long lowestBit(unsigned int bits) {
    return static_cast<unsigned long>(__builtin_ctz(bits));
}

template<class Character>
constexpr unsigned int allBits = ~0U >> (32 - Lanes<Character>::count);

template<class Character, class Test, class BriefTest>
KERNEL_INLINE unsigned long firstWhere(const Character* text, unsigned long count, const Test& test,
                                       const BriefTest& briefTest) {
    using L = Lanes<Character>;
    constexpr unsigned long step = L::count;
    if (count < step)
        return brief::firstWhere(text, count, briefTest);
    if (const unsigned int hits = L::bits(test(load(text))))
        return lowestBit(hits);
    unsigned long i = untilAligned(text);
    for (; i + 4 * step <= count; i += 4 * step) {
        const Register a = test(load(text + i));
        const Register b = test(load(text + i + step));
        const Register c = test(load(text + i + 2 * step));
        const Register d = test(load(text + i + 3 * step));
        if (L::bits(either(either(a, b), either(c, d))) == 0)
            continue;
        if (const unsigned int hits = L::bits(a))
            return i + lowestBit(hits);
        if (const unsigned int hits = L::bits(b))
            return i + step + lowestBit(hits);
        if (const unsigned int hits = L::bits(c))
            return i + 2 * step + lowestBit(hits);
        return i + 3 * step + lowestBit(L::bits(d));
    }
    for (; i + step <= count; i += step)
        if (const unsigned int hits = L::bits(test(load(text + i))))
            return i + lowestBit(hits);
    if (i < count) {
        // The characters that this looks at again are known to fail the test.
        i = count - step;
        if (const unsigned int hits = L::bits(test(load(text + i))))
            return i + lowestBit(hits);
    }
    return notFound;
}

template<class Character, bool folded>
KERNEL_TARGET unsigned long formFind(const Character* text, unsigned long count,
                                     Character c) noexcept {
    return firstWhere(text, count, EqualTest<Character, folded>(c),
                      sse2::EqualTest<Character, folded>(c));
}

template<class Character>
KERNEL_TARGET unsigned long formFindEither(const Character* text, unsigned long count, Character a,
                                           Character b) noexcept {
    return firstWhere(text, count, EitherTest<Character>(a, b), sse2::EitherTest<Character>(a, b));
}

template<class Character, bool folded>
KERNEL_INLINE Register sameLanes(const Character* a, const Character* b) {
    using L = Lanes<Character>;
    return folded ? L::equal(lowerLanes<Character>(load(a)), lowerLanes<Character>(load(b)))
                  : L::equal(load(a), load(b));
}

template<class Character, bool folded>
KERNEL_TARGET unsigned long formMismatch(const Character* a, const Character* b,
                                         unsigned long count) noexcept {
    using L = Lanes<Character>;
    constexpr unsigned long step = L::count;
    constexpr unsigned int all = allBits<Character>;
    if (count < step)
        return brief::mismatch<Character, folded>(a, b, count);
    if (const unsigned int miss = L::bits(sameLanes<Character, folded>(a, b)) ^ all)
        return lowestBit(miss);
    unsigned long i = step;
    if (count >= 8 * step) {
        for (i = untilAligned(a); i + 4 * step <= count; i += 4 * step) {
            const Register front = both(sameLanes<Character, folded>(a + i, b + i),
                                        sameLanes<Character, folded>(a + i + step, b + i + step));
            const Register back =
                both(sameLanes<Character, folded>(a + i + 2 * step, b + i + 2 * step),
                     sameLanes<Character, folded>(a + i + 3 * step, b + i + 3 * step));
            if (L::bits(both(front, back)) != all)
                break;
        }
    }
    for (; i + step <= count; i += step)
        if (const unsigned int miss = L::bits(sameLanes<Character, folded>(a + i, b + i)) ^ all)
            return i + lowestBit(miss);
    if (i < count) {
        i = count - step;
        if (const unsigned int miss = L::bits(sameLanes<Character, folded>(a + i, b + i)) ^ all)
            return i + lowestBit(miss);
    }
    return count;
}

template<class Character, bool toLower>
KERNEL_INLINE Register foldLanes(const Character* from) {
    return toLower ? lowerLanes<Character>(load(from)) : upperLanes<Character>(load(from));
}

template<class Character, bool toLower>
KERNEL_TARGET void formFold(Character* to, const Character* from, unsigned long count) noexcept {
    constexpr unsigned long step = Lanes<Character>::count;
    if (count < step)
        return brief::fold<Character, toLower>(to, from, count);
    unsigned long i = 0;
    for (; i + 4 * step <= count; i += 4 * step) {
        const Register a = foldLanes<Character, toLower>(from + i);
        const Register b = foldLanes<Character, toLower>(from + i + step);
        const Register c = foldLanes<Character, toLower>(from + i + 2 * step);
        const Register d = foldLanes<Character, toLower>(from + i + 3 * step);
        store(to + i, a);
        store(to + i + step, b);
        store(to + i + 2 * step, c);
        store(to + i + 3 * step, d);
    }
    for (; i + step <= count; i += step)
        store(to + i, foldLanes<Character, toLower>(from + i));
    if (i < count) {
        // In place, some of these are folded already, which folding again leaves as they are.
        i = count - step;
        store(to + i, foldLanes<Character, toLower>(from + i));
    }
}

KERNEL_TARGET inline void formWiden(wchar_t* to, const char* from, unsigned long count) noexcept {
    constexpr unsigned long step = Lanes<wchar_t>::count;
    if (brief::isBrief<char>(count))
        return brief::widen(to, from, count);
    widenTo(to, from);
    unsigned long i = untilAligned(to);
    for (; i + 4 * step <= count; i += 4 * step) {
        widenTo(to + i, from + i);
        widenTo(to + i + step, from + i + step);
        widenTo(to + i + 2 * step, from + i + 2 * step);
        widenTo(to + i + 3 * step, from + i + 3 * step);
    }
    for (; i + step <= count; i += step)
        widenTo(to + i, from + i);
    widenTo(to + count - step, from + count - step);
}

KERNEL_INLINE void narrowTo(char* to, const wchar_t* from) {
    constexpr unsigned long part = Lanes<wchar_t>::count;
    store(to, packLow(load(from), load(from + part), load(from + 2 * part), load(from + 3 * part)));
}

KERNEL_TARGET inline void formNarrow(char* to, const wchar_t* from, unsigned long count) noexcept {
    constexpr unsigned long step = Lanes<char>::count;
    if (count < step)
        return brief::narrow(to, from, count);
    for (unsigned long i = 0; i + step < count; i += step)
        narrowTo(to + i, from + i);
    narrowTo(to + count - step, from + count - step);
}

template<class Character, bool name>
KERNEL_TARGET unsigned long formSkip(const Character* text, unsigned long count) noexcept {
    constexpr unsigned long step = Lanes<char>::count;
    if (count < step)
        return brief::skip<name>(text, count);
    unsigned long i = 0;
    for (; i + step <= count; i += step)
        if (const unsigned int ends = skipBits<name>(text + i))
            return i + lowestBit(ends);
    if (i < count) {
        i = count - step;
        if (const unsigned int ends = skipBits<name>(text + i))
            return i + lowestBit(ends);
    }
    return count;
}

/// What a search for a text compares with. Should the comparisons cost too much for the distance
/// made, the two-way search does the rest.
template<class Character, bool folded>
class Candidates {
public:
    Candidates(const Character* searched, unsigned long searchedCount, const Character* wanted,
               unsigned long wantedCount) noexcept
        : text(searched), count(searchedCount), pattern(wanted), patternCount(wantedCount) {}

    /// Whether the search is over: one of the places that `hits` marks, counted from `from`, holds
    /// the pattern, or the rest has been searched.
    KERNEL_INLINE bool decide(unsigned long from, unsigned int hits) {
        return hits != 0 && compare(from, hits);
    }

    unsigned long result = notFound;

private:
    KERNEL_TARGET __attribute__((noinline)) bool compare(unsigned long from, unsigned int hits) {
        for (; hits != 0; hits &= hits - 1) {
            const unsigned long start = from + lowestBit(hits);
            const unsigned long matched =
                formMismatch<Character, folded>(text + start, pattern, patternCount);
            if (matched == patternCount) {
                result = start;
                return true;
            }
            spent += matched;
            if (spent > 8 * start + 4096) {
                const TwoWaySearch<Character, folded> search(pattern, patternCount);
                result = search.find(text, count, start + 1);
                return true;
            }
        }
        return false;
    }

    const Character* text;
    unsigned long count;
    const Character* pattern;
    unsigned long patternCount;
    unsigned long spent = 0; // characters compared in vain
};

/// Looks at the places from `from` up to `end`, of which there are a register's worth at least.
template<class Character, bool folded>
KERNEL_TARGET bool searchPlaces(Candidates<Character, folded>& search, const Character* text,
                                unsigned long from, unsigned long end, const Character* pattern,
                                Anchors anchors) noexcept {
    using L = Lanes<Character>;
    constexpr unsigned long step = L::count;
    const EqualTest<Character, folded> first(pattern[anchors.first]);
    const EqualTest<Character, folded> second(pattern[anchors.second]);
    const Character* firsts = text + anchors.first;
    const Character* seconds = text + anchors.second;
    unsigned long i = from;
    if (search.decide(i, L::bits(both(first(load(firsts + i)), second(load(seconds + i))))))
        return true;
    i += untilAligned(firsts + i);
    for (; i + 4 * step <= end; i += 4 * step) {
        Register a = first(load(firsts + i));
        Register b = first(load(firsts + i + step));
        Register c = first(load(firsts + i + 2 * step));
        Register d = first(load(firsts + i + 3 * step));
        if (L::bits(either(either(a, b), either(c, d))) == 0)
            continue;
        a = both(a, second(load(seconds + i)));
        b = both(b, second(load(seconds + i + step)));
        c = both(c, second(load(seconds + i + 2 * step)));
        d = both(d, second(load(seconds + i + 3 * step)));
        if (L::bits(either(either(a, b), either(c, d))) == 0)
            continue;
        if (search.decide(i, L::bits(a)) || search.decide(i + step, L::bits(b)) ||
            search.decide(i + 2 * step, L::bits(c)) || search.decide(i + 3 * step, L::bits(d)))
            return true;
    }
    for (; i + step <= end; i += step)
        if (search.decide(i, L::bits(both(first(load(firsts + i)), second(load(seconds + i))))))
            return true;
    if (i >= end)
        return false;
    const unsigned long last = end - step;
    const unsigned int hits =
        L::bits(both(first(load(firsts + last)), second(load(seconds + last))));
    return search.decide(i, hits >> (i - last));
}

template<class Character, bool folded>
KERNEL_TARGET __attribute__((noinline)) unsigned long
briefFindText(const Character* text, unsigned long places, const Character* pattern,
              unsigned long patternCount, Anchors anchors) noexcept {
    unsigned int marked = brief::candidates<Character, folded>(text, places, pattern, anchors);
    while (marked != 0) {
        const unsigned long start = brief::indexOfLowest<Character>(marked);
        if (formMismatch<Character, folded>(text + start, pattern, patternCount) == patternCount)
            return start;
        marked = brief::withoutLowest<Character>(marked);
    }
    return notFound;
}

template<class Character, bool folded>
KERNEL_TARGET __attribute__((noinline)) unsigned long
longFindText(const Character* text, unsigned long count, const Character* pattern,
             unsigned long patternCount, Anchors anchors) noexcept {
    // Many searches end soon. For those that do not, a better choice of anchors is worth its time.
    constexpr unsigned long soon = 512;
    const unsigned long places = count - patternCount + 1;
    Candidates<Character, folded> search(text, count, pattern, patternCount);
    if (places < 2 * soon)
        searchPlaces(search, text, 0, places, pattern, anchors);
    else if (!searchPlaces(search, text, 0, soon, pattern, anchors))
        searchPlaces(search, text, soon, places, pattern,
                     rareAnchors<Character, folded>(pattern, patternCount));
    return search.result;
}

/// Looks for the places where two characters of the pattern stand and compares only there.
template<class Character, bool folded>
KERNEL_TARGET unsigned long formFindText(const Character* text, unsigned long count,
                                         const Character* pattern,
                                         unsigned long patternCount) noexcept {
    if (patternCount == 0 || patternCount > count)
        return notFound;
    if (patternCount == 1)
        return formFind<Character, folded>(text, count, pattern[0]);
    const unsigned long places = count - patternCount + 1;
    const Anchors anchors = quickAnchors<Character, folded>(pattern, patternCount);
    return places < Lanes<Character>::count
               ? briefFindText<Character, folded>(text, places, pattern, patternCount, anchors)
               : longFindText<Character, folded>(text, count, pattern, patternCount, anchors);
}

constexpr Form makeForm(const char* name) {
    return {
        name,
        formFind<char, false>,
        formFind<char, true>,
        formFindEither<char>,
        formFindText<char, false>,
        formFindText<char, true>,
        formMismatch<char, false>,
        formMismatch<char, true>,
        formSkip<char, false>,
        formSkip<char, true>,
        formFold<char, true>,
        formFold<char, false>,
        formWiden,
        formNarrow,
        formFind<wchar_t, false>,
        formFind<wchar_t, true>,
        formFindEither<wchar_t>,
        formFindText<wchar_t, false>,
        formFindText<wchar_t, true>,
        formMismatch<wchar_t, false>,
        formMismatch<wchar_t, true>,
        formFold<wchar_t, true>,
        formFold<wchar_t, false>,
        formSkip<wchar_t, false>,
        formSkip<wchar_t, true>,
    };
}
