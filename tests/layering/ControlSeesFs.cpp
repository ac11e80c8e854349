// control knows nothing of the file system.
#include "fs/FabricVolume.h"
