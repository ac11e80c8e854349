// The scenarios, each a program run of its own, with a host that serves one small file.
#pragma once

#import "System.h"

typedef void (*Scenario)(HostForRun* host);

// A loaded and mounted volume, whose file system lives as long as it.
TarnelVolume* loadedVolume(HostForRun* host);
// The same of a file system that the scenario holds.
TarnelVolume* loadedBy(TarnelFileSystem* fileSystem);
FSItem* strangeItem(void);  // of no volume; autoreleased
bool logHas(NSString* line);
enum { allWanted = 0x3FFF };

#define SCENARIO(name) void name(HostForRun* host);
#include "Scenarios.def"
#undef SCENARIO
