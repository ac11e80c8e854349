// The seam is plain types: it knows nothing of the protocol.
#include "control/FileStat.h"
