#pragma once

// The node classes this host compiles in, as any host registers its own: the
// render node and the render settings nodes under it.
void RegisterHostClasses();
