#if __cplusplus < 202002L
#error This test is about C++20
#endif

#define MIXED_COMPARISON MixedComparisonInCpp20
#include "MixedComparison.h"
