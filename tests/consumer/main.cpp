// A host program built against an Ostrel package found with find_package(Ostrel).
#include <ostrel.h>

#include <cmath>
#include <cstdio>

int main()
{
    trString name("consumer");
    name += ": ";
    trVector v = trVector(3, 0, 4).Normalized();
    if (v.x != 0.6 && std::fabs(v.x - 0.6) > 1e-12)
        return 1;
    double p[3] = {0.5, 1.25, 2.75};
    double n = trNoise3(p);
    if (!(n > -2 && n < 2))
        return 1;
    name += "ok";
    std::printf("%s\n", name.chars);
    return 0;
}
