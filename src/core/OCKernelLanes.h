// What a register of characters is asked, once for every register width. There is no guard, on
// purpose: each width's file includes this in its own namespace, after it has defined
//
//   KERNEL_TARGET     the attribute that lets a function use the instructions
//   KERNEL_INLINE     the same for small inline functions
//   Register          a vector register
//   Lanes<Character>  how many characters a register holds (`count`), the greatest that a lane can
//                     hold (`greatest`), and `splat`, `equal`, `greater` (signed), `add`, and
//                     `bits`: one bit for each lane that is all ones
//   load, store       without alignment
//   both, either      bitwise and, or; `without(a, b)` is `b` and not `a`
//   packSigned        four registers of wide characters into one of bytes, what a signed byte
//                     cannot hold becoming -128 or 127
//   packLow           the same with the low 8 bits of each
//   widenTo           stores the `Lanes<wchar_t>::count` bytes at `from`, sign-extended

/// Sets the case bit in the lanes that hold an upper case letter. Moving 'Z' to the greatest value
/// there is leaves one comparison to do: everything from 'A' on is at its side.
template<class Character>
KERNEL_INLINE Register lowerLanes(Register v) {
    using L = Lanes<Character>;
    const Register moved = L::add(v, L::splat(static_cast<Character>(L::greatest - 'Z')));
    const Register letters = L::greater(moved, L::splat(static_cast<Character>(L::greatest - 26)));
    return either(v, both(letters, L::splat(static_cast<Character>(caseBit))));
}

template<class Character>
KERNEL_INLINE Register upperLanes(Register v) {
    using L = Lanes<Character>;
    const Register moved = L::add(v, L::splat(static_cast<Character>(L::greatest - 'z')));
    const Register letters = L::greater(moved, L::splat(static_cast<Character>(L::greatest - 26)));
    return without(both(letters, L::splat(static_cast<Character>(caseBit))), v);
}

/// Whether a lane holds one character. Folded, the two cases of a letter differ in one bit, which
/// is set on both sides.
template<class Character, bool folded>
struct EqualTest {
    KERNEL_INLINE explicit EqualTest(Character c)
        : wanted(Lanes<Character>::splat(folded ? lower(c) : c)),
          ignored(Lanes<Character>::splat(
              folded && lower(c) >= 'a' && lower(c) <= 'z' ? static_cast<Character>(caseBit) : 0)) {
    }

    KERNEL_INLINE Register operator()(Register v) const {
        return Lanes<Character>::equal(folded ? either(v, ignored) : v, wanted);
    }

    Register wanted;
    Register ignored;
};

template<class Character>
struct EitherTest {
    KERNEL_INLINE EitherTest(Character a, Character b)
        : first(Lanes<Character>::splat(a)), second(Lanes<Character>::splat(b)) {}

    KERNEL_INLINE Register operator()(Register v) const {
        return either(Lanes<Character>::equal(v, first), Lanes<Character>::equal(v, second));
    }

    Register first;
    Register second;
};

/// One bit for each of the next `Lanes<char>::count` characters that is not white space.
KERNEL_INLINE unsigned int notWhiteSpaceBits(Register v) {
    return Lanes<char>::bits(Lanes<char>::greater(v, Lanes<char>::splat(32)));
}

/// One bit for each that ends a markup name. Neighbours that differ in bits which are masked are
/// tested together: `(` to `+`, and `/` with `?`.
KERNEL_INLINE unsigned int nameEndBits(Register v) {
    using L = Lanes<char>;
    const Register blank = L::greater(L::splat(33), v);
    const Register brackets = L::equal(both(v, L::splat(~3)), L::splat('('));
    const Register slashes = L::equal(either(v, L::splat('/' ^ '?')), L::splat('?'));
    const Register equals = L::equal(v, L::splat('='));
    const Register closes = L::equal(v, L::splat('>'));
    const Register opens = L::equal(v, L::splat('['));
    return L::bits(
        either(either(either(blank, brackets), either(slashes, equals)), either(closes, opens)));
}

/// One bit for each byte that an HTML name does not have. The digits and `:` are neighbours.
KERNEL_INLINE unsigned int htmlNameEndBits(Register v) {
    using L = Lanes<char>;
    const Register lowered = either(v, L::splat(caseBit));
    const Register letters =
        L::greater(L::add(lowered, L::splat(L::greatest - 'z')), L::splat(L::greatest - 26));
    const Register digits =
        L::greater(L::add(v, L::splat(L::greatest - ':')), L::splat(L::greatest - 11));
    const Register marks = either(L::equal(v, L::splat('!')), L::equal(v, L::splat('-')));
    const Register line = L::equal(v, L::splat('_'));
    return L::bits(L::equal(either(either(letters, digits), either(marks, line)), L::splat(0)));
}

template<bool name>
KERNEL_INLINE unsigned int skipBits(const char* text) {
    using L = Lanes<char>;
    const Register v = load(text);
    return name ? htmlNameEndBits(v)
                : L::bits(either(L::greater(v, L::splat(32)), L::greater(L::splat(0), v)));
}

template<bool name>
KERNEL_INLINE unsigned int skipBits(const wchar_t* text) {
    constexpr unsigned long part = Lanes<wchar_t>::count;
    const Register v =
        packSigned(load(text), load(text + part), load(text + 2 * part), load(text + 3 * part));
    return name ? nameEndBits(v) : notWhiteSpaceBits(v);
}
