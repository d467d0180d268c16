// Hardware probe: whether an NVIDIA driver with at least one CUDA device is present.
#include "core/tarnwick_data.h"

#include <dlfcn.h>

namespace core {

namespace {

// Driver API entry points, resolved at run time so that the program needs no CUDA to build
// or to start. Both return 0 (CUDA_SUCCESS) on success.
using CuInitFn = int (*)(unsigned int flags);
using CuDeviceGetCountFn = int (*)(int *count);

bool ProbeCuda()
{
    void *library = dlopen("libcuda.so.1", RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr) {
        return false;
    }
    auto cuInit = reinterpret_cast<CuInitFn>(dlsym(library, "cuInit"));
    auto cuDeviceGetCount =
        reinterpret_cast<CuDeviceGetCountFn>(dlsym(library, "cuDeviceGetCount"));
    if (cuInit == nullptr || cuDeviceGetCount == nullptr) {
        dlclose(library);
        return false;
    }
    int count = 0;
    bool found = cuInit(0) == 0 && cuDeviceGetCount(&count) == 0 && count > 0;
    // The library stays loaded: once cuInit has run, the driver may have threads of its own
    // inside it, and unloading it under them is not safe.
    return found;
}

} // namespace

bool HasCuda()
{
    // The driver is asked once per process; devices do not come and go while it runs.
    static const bool hasCuda = ProbeCuda();
    return hasCuda;
}

} // namespace core
