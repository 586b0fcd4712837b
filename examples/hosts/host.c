// A host in C: it loads the module by itself and knows each block by its structure.
// usage: host MODULE
#include <dlfcn.h>
#include <nodusmath/blocks.h>
#include <stdio.h>

int main(int count, char** arguments)
{
    void* const module = dlopen(count == 2 ? arguments[1] : "libnodusmath.so", RTLD_NOW);
    if (module == NULL)
        return fprintf(stderr, "%s\n", dlerror()), 1;
    NodusSolve *add, *pass;
    *(void**)&add = dlsym(module, "NodusAdd_Float3_Solve");
    *(void**)&pass = dlsym(module, "NodusLogValueString_Solve");

    NodusAdd_Float3_In const terms = {.a = {1, 2, 3}, .b = {10, 20, 30}};
    NodusAdd_Float3_Out sum;
    add(&terms, &sum);
    printf("%g %g %g\n", sum.result.x, sum.result.y, sum.result.z);

    // Zero bytes are the null reference, the empty text: nothing to be made, nothing to be
    // released.
    NodusLogValueString_In const texts = NodusLogValueString_In_STANDARD;
    NodusLogValueString_Out same = {{0}};
    pass(&texts, &same);
    printf("%s\n", same.result.text == NULL ? "no text" : "a text");
    return dlclose(module);
}
