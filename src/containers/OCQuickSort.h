#ifndef ORVABASE_OCQUICKSORT_H
#define ORVABASE_OCQUICKSORT_H

namespace orvabase {

/// Sorts a range in place: n log n comparisons at most and a logarithmic call stack, not stable.
///
/// `Range` says what there is to sort. Elements only ever change places by `exchange`, so none is
/// lost when a comparison throws. A comparison that contradicts itself stops at the ends of the
/// range.
///
///     class Range {
///         typedef … Pivot;                        // a copy of an element, or a reference to it
///         Pivot pivot(long index);
///         OECompareResult compare(long index, const Pivot& pivot);
///         void exchange(long a, long b);
///     };
template<class Range>
class OCQuickSort {
public:
    explicit OCQuickSort(Range& sorted) : range(sorted) {}

    /// Sorts `count` elements, more than 0.
    void sort(unsigned long count) {
        // Far deeper than partitions of common orders get.
        unsigned int depth = 32;
        for (unsigned long n = count; n > 1; n /= 2)
            depth += 4;
        sort(0, static_cast<long>(count - 1), depth);
    }

private:
    typedef typename Range::Pivot Pivot;

    // NOLINTNEXTLINE(misc-no-recursion): `depth` bounds it
    void sort(long low, long high, unsigned int depth) {
        for (;; --depth) {
            if (depth == 0) {
                heapSort(low, high);
                return;
            }
            long i = low;
            long j = high;
            partition(i, j);
            if (low < j)
                sort(low, j, depth - 1);
            if (i >= high)
                return;
            low = i;
        }
    }

    /// Partitions the elements `i` to `j` by the one in their middle. Afterwards what is left to
    /// sort are the elements up to `j` and those from `i` on.
    void partition(long& i, long& j) {
        const long low = i;
        const long high = j;
        const Pivot pivot = range.pivot((low + high) / 2);
        do {
            while (isLess(i, pivot) && i < high)
                ++i;
            while (isGreater(j, pivot) && j > low)
                --j;
            if (i <= j) {
                range.exchange(i, j);
                ++i;
                --j;
            }
        } while (i <= j);
    }

    void heapSort(long low, long high) {
        const long size = high - low + 1;
        for (long root = size / 2 - 1; root >= 0; --root)
            siftDown(low, root, size);
        for (long end = size - 1; end > 0; --end) {
            range.exchange(low, low + end);
            siftDown(low, 0, end);
        }
    }

    void siftDown(long low, long root, long size) {
        for (long child = 2 * root + 1; child < size; child = 2 * root + 1) {
            if (child + 1 < size && isLess(low + child, range.pivot(low + child + 1)))
                ++child;
            if (!isLess(low + root, range.pivot(low + child)))
                return;
            range.exchange(low + root, low + child);
            root = child;
        }
    }

    bool isLess(long index, const Pivot& pivot) {
        return range.compare(index, pivot) == CompareResultLess;
    }
    bool isGreater(long index, const Pivot& pivot) {
        return range.compare(index, pivot) == CompareResultGreater;
    }

    Range& range;
};

} // namespace orvabase

#endif
