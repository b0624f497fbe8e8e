#ifndef ORVABASE_SORTEDSEARCH_H
#define ORVABASE_SORTEDSEARCH_H

#include "OCObject.h"

namespace orvabase {

/// Searches `count` sorted elements: true and the index of the first equal one that it meets, or
/// false and the index where one would have its place.
///
/// `orderAt(i)` compares element `i` with what is looked for; `fetchAt(i)` fetches an element that
/// may be looked at next.
template<class OrderAt, class FetchAt>
bool searchSorted(unsigned long count, OrderAt orderAt, FetchAt fetchAt, unsigned long& index) {
    unsigned long low = 0;
    unsigned long high = count;
    while (low < high) {
        // The middle of `low` and the last index, which is one below `high`.
        const unsigned long middle = low + (high - 1 - low) / 2;
        fetchAt(low + (middle - low) / 2);
        fetchAt(middle + (high - middle) / 2);
        const OECompareResult order = orderAt(middle);
        if (order == CompareResultEqual) {
            index = middle;
            return true;
        }
        if (order == CompareResultLess)
            low = middle + 1;
        else
            high = middle;
    }
    index = low;
    return false;
}

} // namespace orvabase

#endif
