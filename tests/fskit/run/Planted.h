// Faults on purpose, which the sanitizers have to find in this very program: one that finds nothing
// here finds nothing anywhere.
#pragma once

// "leak": an object of the adapter's is never released. "race": two threads change one word.
int plant(const char* fault);
