/* What the C tests share: checks that count failures, and a counter that callbacks raise. */
#ifndef TESTS_C_CHECK_H
#define TESTS_C_CHECK_H

#include <pthread.h>
#include <stdio.h>
#include <string.h>
#include <time.h>

#include "zel.h"

static int s_Checks = 0, s_Failed = 0;

/* clang-format off */
#define CHECK(condition) Check((condition) ? 1 : 0, #condition, __LINE__)
#define EXPECT(status, call) CheckStatus((status), (call), #call, __LINE__)
#define OK(call) EXPECT(ZEL_OK, call)
/* clang-format on */

static void Check(int good, const char* what, int line) {
    ++s_Checks;
    if (good) return;
    ++s_Failed;
    printf("line %d: %s [%s]\n", line, what, zel_error_message());
}

/* A failure has a message, a success has none. */
static void CheckStatus(zel_status wanted, zel_status status, const char* call, int line) {
    const int with_message = *zel_error_message() != '\0';
    ++s_Checks;
    if (status == wanted && with_message == (wanted != ZEL_OK)) return;
    ++s_Failed;
    printf("line %d: %s is %s, not %s [%s]\n", line, call, zel_status_name(status), zel_status_name(wanted),
           zel_error_message());
}

typedef struct Counter {
    pthread_mutex_t mutex;
    pthread_cond_t raised;
    int count;
} Counter;

static void Raise(Counter* counter) {
    pthread_mutex_lock(&counter->mutex);
    ++counter->count;
    pthread_cond_broadcast(&counter->raised);
    pthread_mutex_unlock(&counter->mutex);
}

/* Whether it gets there within a minute. */
static int Reaches(Counter* counter, int wanted) {
    struct timespec end = {time(NULL) + 60, 0};
    int timed_out = 0;
    pthread_mutex_lock(&counter->mutex);
    while (counter->count < wanted && !timed_out) {
        timed_out = pthread_cond_timedwait(&counter->raised, &counter->mutex, &end) != 0;
    }
    timed_out = counter->count < wanted;
    pthread_mutex_unlock(&counter->mutex);
    return !timed_out;
}

#endif
