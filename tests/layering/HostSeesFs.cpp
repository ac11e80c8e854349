// A host is the other side: it knows nothing of the volume.
#include "fs/FabricVolume.h"
