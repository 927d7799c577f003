#pragma once
// Small services a host relies on: file checks and the node a host script runs for.

class trString;
class trBase;

bool trCheckFileExists(trString const &path);

// The node that a host script runs for; null when none.
trBase *trScriptNode();
// Sets it and returns the previous one.
trBase *trSetScriptNode(trBase *node);
