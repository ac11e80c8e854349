// Compiles: the public headers of control and what it links.
#include "RecordCoding.h"
#include "control/ControlChannel.h"

std::string_view layering() { return tarnel::description(tarnel::ControlChannelError::timedOut); }
