// A host knows nothing of items and attributes.
#include "seam/Item.h"
