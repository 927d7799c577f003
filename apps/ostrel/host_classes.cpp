#include "host_classes.h"

void RegisterHostClasses() {}
