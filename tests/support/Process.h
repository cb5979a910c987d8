// This process: its environment, and what it holds now.
#ifndef TESTS_SUPPORT_PROCESS_H
#define TESTS_SUPPORT_PROCESS_H

#include "platform/ProcessUse.h"
#include "platform/UserTexts.h"

#endif
