#include "shading/trShadingInterface.h"

void trShadingInterface::ABIStaticInit() {}
