#pragma once
// What a shader hands back for the lighting code: an emission and a list of
// lobes, each a way the surface scatters light; and what a ray carries while it
// runs inside a scattering medium. The reflectance functions that evaluate lobes
// come with the reflectance models.

#include "foundation/trColour.h"
#include "foundation/trVector.h"

#include <vector>

class trShader;

enum trBsdfLobeType : int {
    trLobeOmniscatterReflection = 0,
    trLobeOmniscatterTransmission = 1,
    trLobeDiffuseReflection = 2,
    trLobeDiffuseTransmission = 3,
    trLobeGlossyReflection = 4,
    trLobeGlossyTransmission = 5,
    // Light the shader computed itself, added to the indirect diffuse output as it stands.
    trLobePrecomputed = 1000,
};

struct trBsdfLobe {
    trFCol Col;    // what the lobe scatters; black turns it off
    trFCol Col2;   // a second colour, as the lobe type uses it
    float Weight = 1.0f;
    int type = trLobeDiffuseReflection;
    // The geometry the lobe was made for.
    trVector P;
    trVector N;
    trVector Ni;
    double Roughness = 0.0;
};

class trBsdf {
public:
    // Header, then the lobes.
    trFCol Emission;
    int Flags = 0;  // a word the shader framework may set; cleared with the rest
    std::vector<trBsdfLobe> Lobes;

    // No emission, no lobes; the lobe storage is kept for the next shade.
    void Clear()
    {
        Emission = trFCol();
        Flags = 0;
        Lobes.clear();
    }
    // The first lobe of `type`, or null.
    trBsdfLobe const *FirstLobeOfType(int type) const
    {
        for (trBsdfLobe const &lobe : Lobes)
            if (lobe.type == type)
                return &lobe;
        return nullptr;
    }
};

struct trBsdfMedium {
    bool Active = false;
    double DistanceScale = 1.0;
    trFCol ChannelScale = trFCol(1.0f, 1.0f, 1.0f);
    int Mode = 1;
    trVector EntryPoint;
    trVector Normal;
    trVector Eye;
    double Density = 0.0;
    trShader *DensityShader = nullptr;
    trFCol Colour;
    trShader *ColourShader = nullptr;
};
