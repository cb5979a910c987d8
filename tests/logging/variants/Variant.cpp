#include "tests/logging/variants/Variant.h"

// clang-format off
//                         name        library enabled delivered gets lines frees
#if defined(ZEL_VARIANT_absent)
const Variant kVariant = {"absent",    false,  false,  false,    0,   0,    0};
#elif defined(ZEL_VARIANT_no_get)
const Variant kVariant = {"no_get",    true,   false,  false,    0,   0,    1};
#elif defined(ZEL_VARIANT_refusing)
const Variant kVariant = {"refusing",  true,   false,  false,    1,   0,    1};
#elif defined(ZEL_VARIANT_no_log)
const Variant kVariant = {"no_log",    true,   false,  false,    1,   0,    1};
#elif defined(ZEL_VARIANT_no_free)
const Variant kVariant = {"no_free",   true,   true,   true,     1,   1,    0};
#elif defined(ZEL_VARIANT_failing)
const Variant kVariant = {"failing",   true,   true,   false,    1,   1,    1};
#endif
// clang-format on
