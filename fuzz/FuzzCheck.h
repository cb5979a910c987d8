// Ends the program when something that holds for every input does not.
#ifndef FUZZ_FUZZCHECK_H
#define FUZZ_FUZZCHECK_H

#include <cstdio>
#include <cstdlib>

inline void FuzzCheck(bool holds, const char* file = __builtin_FILE(), int line = __builtin_LINE()) {
    if (holds) return;
    std::fprintf(stderr, "%s:%d: this does not hold\n", file, line);
    std::abort();
}

#endif
