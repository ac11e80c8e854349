// Reference counts that the thread sanitizer sees.
#pragma once

// The counts are kept by libraries that the sanitizer does not look into, so an object that one
// thread reads and another one frees looks like a race to it, though the count stands between them.
// From here on each release tells. Does nothing without the sanitizer. Once, before other threads.
void seeCounts(void);
