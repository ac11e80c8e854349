// Compiles: the reference host speaks the protocol.
#include "control/UnixSocketServer.h"
#include "host/HostOptions.h"

const std::string& layering(const tarnel::UnixSocketServer& server) { return server.path(); }
