#include "shading/trMaterial.h"

#include "foundation/trPrivateGlobals.h"
#include "shading/trShader.h"

#include <new>

trMaterial::trMaterial(trShader *surface, trShader *displacement, trShader *atmosphere, float smoothing,
                       unsigned char flag0, unsigned char flag1, unsigned char flag2, unsigned char flag3)
    : shaders{surface, displacement, displacement, atmosphere}, smoothing(smoothing),
      flags{flag0, flag1, flag2, flag3}
{
}

void trMaterial::ForgetShader(trShader const *shader)
{
    for (trShader *&s : shaders)
        if (s == shader)
            s = nullptr;
}

bool trMaterial::HasShader() const
{
    for (trShader *s : shaders)
        if (s)
            return true;
    return false;
}

trPersistentMaterial::trPersistentMaterial(trMaterial const &m) : material(m)
{
    // Registering twice is harmless: the notifier adds each dependant once.
    for (int i = 0; i < trMaterial::kNumShaders; ++i)
        if (trShader *s = material.Shader(i))
            s->RegisterDependant(this);
}

trPersistentMaterial::~trPersistentMaterial()
{
    for (int i = 0; i < trMaterial::kNumShaders; ++i)
        if (trShader *s = material.Shader(i))
            s->ForgetDependant(this);
}

void trPersistentMaterial::OnDestructionNotifierPreDestroy(trDestructionNotifier const *notifier)
{
    for (int i = 0; i < trMaterial::kNumShaders; ++i)
        if (trShader *s = material.Shader(i); s && static_cast<trDestructionNotifier const *>(s) == notifier) {
            // The notifier walks a copy of its list, so forgetting here is safe.
            s->ForgetDependant(this);
            material.ForgetShader(s);
        }
}

long trAddPersistentMaterial(trMaterial const &material)
{
    trPersistentMaterial *pm = new (std::nothrow) trPersistentMaterial(material);
    if (!pm)
        return -1;
    std::lock_guard<std::mutex> lock(trThePrivateGlobals.Mutex());
    auto &table = trThePrivateGlobals.PersistentMaterials();
    try {
        table.push_back(pm);
    } catch (...) {
        delete pm;
        return -1;
    }
    return long(table.size()) - 1;
}

trPersistentMaterial *trGetPersistentMaterial(long index)
{
    std::lock_guard<std::mutex> lock(trThePrivateGlobals.Mutex());
    auto &table = trThePrivateGlobals.PersistentMaterials();
    if (index < 0 || index >= long(table.size()))
        return nullptr;
    return table[index];
}

long trNumPersistentMaterials()
{
    std::lock_guard<std::mutex> lock(trThePrivateGlobals.Mutex());
    return long(trThePrivateGlobals.PersistentMaterials().size());
}

void trFreePersistentMaterials()
{
    std::vector<trPersistentMaterial *> doomed;
    {
        std::lock_guard<std::mutex> lock(trThePrivateGlobals.Mutex());
        doomed.swap(trThePrivateGlobals.PersistentMaterials());
    }
    for (trPersistentMaterial *pm : doomed)
        delete pm;
}
