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
    TwoWaySearch(const Character* pattern, unsigned long count) noexcept
        : m_pattern(pattern), m_count(count) {
        unsigned long periodAscending = 1;
        unsigned long periodDescending = 1;
        const unsigned long ascending = maximalSuffix<false>(periodAscending);
        const unsigned long descending = maximalSuffix<true>(periodDescending);
        m_split = ascending > descending ? ascending : descending;
        m_period = ascending > descending ? periodAscending : periodDescending;
        m_periodic = true;
        for (unsigned long i = 0; i < m_split && m_periodic; ++i) {
            m_periodic =
                m_period + i < m_count && same<folded>(m_pattern[i], m_pattern[m_period + i]);
        }
        if (!m_periodic) {
            m_period = (m_split > m_count - m_split ? m_split : m_count - m_split) + 1;
        }
    }

    /// The first occurrence at or behind `from`, or `notFound`.
    unsigned long find(const Character* text, unsigned long count,
                       unsigned long from) const noexcept {
        if (m_count > count) {
            return notFound;
        }
        const unsigned long last = count - m_count;
        // How many characters at the front are known to match, because the pattern repeats itself.
        unsigned long known = 0;
        for (unsigned long start = from; start <= last;) {
            const Character* here = text + start;
            unsigned long right = m_split > known ? m_split : known;
            while (right < m_count && same<folded>(m_pattern[right], here[right])) {
                ++right;
            }
            if (right < m_count) {
                start += right - m_split + 1;
                known = 0;
                continue;
            }
            unsigned long left = m_split;
            while (left > known && same<folded>(m_pattern[left - 1], here[left - 1])) {
                --left;
            }
            if (left <= known) {
                return start;
            }
            start += m_period;
            known = m_periodic ? m_count - m_period : 0;
        }
        return notFound;
    }

private:
    /// Where the suffix begins that is the greatest in the order of the characters, or in the
    /// reverse of that order, and its period.
    template<bool reverse>
    unsigned long maximalSuffix(unsigned long& period) const noexcept {
        unsigned long best = 0; // where the greatest suffix seen begins
        unsigned long rival = 1;
        unsigned long equal = 0; // how many characters of both are the same
        period = 1;
        while (rival + equal < m_count) {
            const Character a = folded ? lower(m_pattern[best + equal]) : m_pattern[best + equal];
            const Character b = folded ? lower(m_pattern[rival + equal]) : m_pattern[rival + equal];
            if (a == b) {
                if (equal + 1 == period) {
                    rival += period;
                    equal = 0;
                } else {
                    ++equal;
                }
            } else if (reverse ? a < b : b < a) {
                rival += equal + 1;
                equal = 0;
                period = rival - best;
            } else {
                best = rival;
                ++rival;
                equal = 0;
                period = 1;
            }
        }
        return best;
    }

    const Character* m_pattern;
    unsigned long m_count;
    unsigned long m_split;
    unsigned long m_period;
    bool m_periodic;
};

} // namespace orvabase::kernels

#endif
