#include "nodes/trDestructionNotifier.h"

#include <algorithm>

void trDestructionNotifier::RegisterDependant(trDependant *dependant)
{
    if (dependant && std::find(dependants.begin(), dependants.end(), dependant) == dependants.end())
        dependants.push_back(dependant);
}

void trDestructionNotifier::ForgetDependant(trDependant const *dependant)
{
    dependants.erase(std::remove(dependants.begin(), dependants.end(), dependant), dependants.end());
}

void trDestructionNotifier::PreDestroy()
{
    std::vector<trDependant *> snapshot = dependants;
    for (trDependant *d : snapshot)
        d->OnDestructionNotifierPreDestroy(this);
}
