// The few types of the system's C library that the adapter meets, as Darwin has them: for checks
// against Apple's targets on a machine that has none of Apple's headers.
#pragma once

typedef long long off_t;
