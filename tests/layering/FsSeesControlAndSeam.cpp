// Compiles: the file system speaks the types of control and of the seam.
#include "control/FileStat.h"
#include "fs/FabricVolume.h"
#include "seam/Item.h"

tarnel::FileStat layering(const tarnel::FabricItem& item) { return *item.lastStat(); }
