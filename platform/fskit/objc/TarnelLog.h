// The volume's log in the system's own: one literal format for each line.
#pragma once

// Once for the process, before the first file system is made.
void tarnelUseSystemLog(void);
