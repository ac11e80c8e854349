// Compiles: the seam uses nothing but itself.
#include "seam/Item.h"
#include "seam/VolumeLog.h"

bool layering() { return tarnel::log().isDebugEnabled(); }
