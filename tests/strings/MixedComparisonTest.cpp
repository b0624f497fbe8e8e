#define MIXED_COMPARISON MixedComparison
#include "MixedComparison.h"
