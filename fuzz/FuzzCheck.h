// Ends the program when something that holds for every input does not.
#ifndef FUZZ_FUZZCHECK_H
#define FUZZ_FUZZCHECK_H

#include <cstdio>
#include <cstdlib>

#define ZEL_FUZZ_CHECK(condition)                                                              \
    do {                                                                                       \
        if (!(condition)) {                                                                    \
            std::fprintf(stderr, "%s:%d: %s does not hold\n", __FILE__, __LINE__, #condition); \
            std::abort();                                                                      \
        }                                                                                      \
    } while (false)

#endif
