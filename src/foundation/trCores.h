#pragma once
// How many processors a render uses, and the bound that sizes every per-thread table.

int trDetectedNumCores();
int trDetectedNumCores(bool &ok);
// The final override if on, else the preferred count if on, else the detected count.
// Neither setter checks its range: callers clamp to trMaxThreads.
int trNumCoresToUse();
int trNumCoresToUse(bool &ok);
void trSetPreferredNumCores(bool on, int count);
void trSetFinalOverrideNumCores(bool on, int count);
// max(256, 16 x detected cores); depends on the detected count only, so that no
// preferred or override count can overflow a table sized by it.
int trMaxThreads();
