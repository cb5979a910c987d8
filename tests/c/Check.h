// What the C tests share: checks that count failures, and a counter that callbacks raise.
#ifndef TESTS_C_CHECK_H
#define TESTS_C_CHECK_H

#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "zel.h"

static pthread_mutex_t s_Mutex = PTHREAD_MUTEX_INITIALIZER;  // callbacks check as well
static int s_Checks = 0, s_Failed = 0;

// clang-format off
#define CHECK(condition) Check((condition) ? 1 : 0, #condition, __LINE__)
#define EXPECT(status, call) CheckStatus((status), (call), #call, __LINE__)
#define OK(call) EXPECT(ZEL_OK, call)
// clang-format on

static void Check(int good, const char* what, int line) {
    pthread_mutex_lock(&s_Mutex);
    ++s_Checks;
    if (!good) ++s_Failed;
    if (!good) printf("line %d: %s [%s]\n", line, what, zel_error_message());
    pthread_mutex_unlock(&s_Mutex);
}

// A failure has a message, a success has none.
static void CheckStatus(zel_status wanted, zel_status status, const char* call, int line) {
    char what[300];
    snprintf(what, sizeof what, "%s is %s", call, zel_status_name(status));
    Check(status == wanted && (*zel_error_message() != '\0') == (wanted != ZEL_OK), what, line);
}

typedef struct Counter {
    pthread_mutex_t mutex;
    pthread_cond_t raised;
    int count;
} Counter;

#define COUNTER \
    { PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, 0 }

static void Raise(Counter* counter) {
    pthread_mutex_lock(&counter->mutex);
    ++counter->count;
    pthread_cond_broadcast(&counter->raised);
    pthread_mutex_unlock(&counter->mutex);
}

// Whether it gets there within a minute.
static int Reaches(Counter* counter, int wanted) {
    struct timespec end = {time(NULL) + 60, 0};
    int timed_out = 0;
    pthread_mutex_lock(&counter->mutex);
    while (counter->count < wanted && !timed_out)
        timed_out = pthread_cond_timedwait(&counter->raised, &counter->mutex, &end) != 0;
    timed_out = counter->count < wanted;
    pthread_mutex_unlock(&counter->mutex);
    return !timed_out;
}

#endif
