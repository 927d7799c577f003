#include "volumes/trAtmosList.h"

#include "shading/trShader.h"

trAtmosList::~trAtmosList() { Clear(); }

trAtmosList::trAtmosList(trAtmosList const &other) : trDependant(other)
{
    for (long i = 0; i < other.Count(); ++i)
        Add(other.shaders[i], other.flags[i]);
}

trAtmosList &trAtmosList::operator=(trAtmosList const &other)
{
    if (this != &other) {
        Clear();
        for (long i = 0; i < other.Count(); ++i)
            Add(other.shaders[i], other.flags[i]);
    }
    return *this;
}

long trAtmosList::Add(trShader *shader, trAtmosFlags const &f)
{
    if (shader) {
        shader->RegisterDependant(this);
        shaders.push_back(shader);
        flags.push_back(f);
    }
    return Count();
}

void trAtmosList::Clear()
{
    for (trShader *s : shaders)
        if (s)
            s->ForgetDependant(this);
    shaders.clear();
    flags.clear();
}

void trAtmosList::OnDestructionNotifierPreDestroy(trDestructionNotifier const *notifier)
{
    for (trShader *&s : shaders)
        if (s && static_cast<trDestructionNotifier const *>(s) == notifier) {
            s->ForgetDependant(this);
            s = nullptr;
        }
}
