// What the adapter hands to the C surface, where no answer of the core would tell.
#pragma once

#include <stdint.h>

// Of the last enumeration. Not for several threads at once.
uint64_t spiedCookie(void);
uint64_t spiedVerifier(void);
