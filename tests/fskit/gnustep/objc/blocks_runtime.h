// Where GNUstep's headers look for the blocks runtime.
#pragma once

#include <Block.h>
