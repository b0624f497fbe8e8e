#ifndef ORVABASE_OCKERNELFOLD_H
#define ORVABASE_OCKERNELFOLD_H

namespace orvabase::kernels {

constexpr int caseBit = 'a' - 'A';

template<class Character>
constexpr Character lower(Character c) noexcept {
    return c >= 'A' && c <= 'Z' ? static_cast<Character>(c + caseBit) : c;
}

template<class Character>
constexpr Character upper(Character c) noexcept {
    return c >= 'a' && c <= 'z' ? static_cast<Character>(c - caseBit) : c;
}

template<bool folded, class Character>
constexpr bool same(Character a, Character b) noexcept {
    return folded ? lower(a) == lower(b) : a == b;
}

} // namespace orvabase::kernels

#endif
