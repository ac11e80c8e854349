// What lies in src/ of a module is for nobody else.
#include "RecordCoding.h"
