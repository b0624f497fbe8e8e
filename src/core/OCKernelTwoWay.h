#ifndef ORVABASE_OCKERNELTWOWAY_H
#define ORVABASE_OCKERNELTWOWAY_H

#include "core/OCKernelFold.h"
#include "core/OCKernels.h"

namespace orvabase::kernels {

/// The two-way search of Crochemore and Perrin ("Two-way string-matching", Journal of the ACM 38,
/// 1991): time linear in pattern and text whatever they hold, and no memory of its own. The pattern
/// must not be empty.
template<class Character, bool folded>
class TwoWaySearch {
public:
    TwoWaySearch(const Character* wanted, unsigned long wantedCount) noexcept
        : pattern(wanted), patternCount(wantedCount), periodic(true) {
        unsigned long periodAscending = 1;
        unsigned long periodDescending = 1;
        const unsigned long ascending = maximalSuffix<false>(periodAscending);
        const unsigned long descending = maximalSuffix<true>(periodDescending);
        split = ascending > descending ? ascending : descending;
        period = ascending > descending ? periodAscending : periodDescending;
        for (unsigned long i = 0; i < split && periodic; ++i) {
            periodic = period + i < patternCount && same<folded>(pattern[i], pattern[period + i]);
        }
        if (!periodic)
            period = (split > patternCount - split ? split : patternCount - split) + 1;
    }

    /// The first occurrence at or behind `from`, or `notFound`.
    unsigned long find(const Character* text, unsigned long count,
                       unsigned long from) const noexcept {
        if (patternCount > count)
            return notFound;
        const unsigned long last = count - patternCount;
        // How many characters at the front are known to match, because the pattern repeats itself.
        unsigned long known = 0;
        for (unsigned long start = from; start <= last;) {
            const Character* here = text + start;
            unsigned long right = split > known ? split : known;
            while (right < patternCount && same<folded>(pattern[right], here[right]))
                ++right;
            if (right < patternCount) {
                start += right - split + 1;
                known = 0;
                continue;
            }
            unsigned long left = split;
            while (left > known && same<folded>(pattern[left - 1], here[left - 1]))
                --left;
            if (left <= known)
                return start;
            start += period;
            known = periodic ? patternCount - period : 0;
        }
        return notFound;
    }

private:
    /// Where the suffix begins that is the greatest in the order of the characters, or in the
    /// reverse of that order, and its period.
    template<bool reverse>
    unsigned long maximalSuffix(unsigned long& suffixPeriod) const noexcept {
        unsigned long best = 0; // where the greatest suffix seen begins
        unsigned long rival = 1;
        unsigned long equal = 0; // how many characters of both are the same
        suffixPeriod = 1;
        while (rival + equal < patternCount) {
            const Character a = folded ? lower(pattern[best + equal]) : pattern[best + equal];
            const Character b = folded ? lower(pattern[rival + equal]) : pattern[rival + equal];
            if (a == b) {
                if (equal + 1 == suffixPeriod) {
                    rival += suffixPeriod;
                    equal = 0;
                } else {
                    ++equal;
                }
            } else if (reverse ? a < b : b < a) {
                rival += equal + 1;
                equal = 0;
                suffixPeriod = rival - best;
            } else {
                best = rival;
                ++rival;
                equal = 0;
                suffixPeriod = 1;
            }
        }
        return best;
    }

    const Character* pattern;
    unsigned long patternCount;
    unsigned long split;
    unsigned long period;
    bool periodic;
};

} // namespace orvabase::kernels

#endif
