// The logging library that a program of this folder finds, and what a logger makes of it.
#ifndef TESTS_LOGGING_VARIANTS_VARIANT_H
#define TESTS_LOGGING_VARIANTS_VARIANT_H

struct Variant {
    const char* name;
    bool library;    // there is one
    bool enabled;    // the logger is
    bool delivered;  // what Log answers
    // Calls into the library over the life of one logger with one line.
    int gets;
    int lines;
    int frees;
};

extern const Variant kVariant;

#endif
