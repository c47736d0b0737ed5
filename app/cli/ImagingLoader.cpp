#include "ImagingLoader.h"

#ifdef WENDREL_MODULES_LINKED
#include "imaging/ImagingOperations.h"
#else
#include <cstdio>
#include <string>

#include <dlfcn.h>
#endif

namespace wendrel {

#ifdef WENDREL_MODULES_LINKED

bool addImagingOperations(OperationCatalog& catalog)
{
    registerImagingOperations(catalog);
    return true;
}

#else

bool addImagingOperations(OperationCatalog& catalog)
{
    // Beside this module, wherever it was installed.
    Dl_info self{};
    if (!::dladdr(reinterpret_cast<void*>(&addImagingOperations), &self) || !self.dli_fname)
        return false;
    const std::string module = self.dli_fname;
    const std::string path = module.substr(0, module.rfind('/') + 1) + "wendrel-imaging.so";

    // The module finds the operations core in this one, which the executable loaded globally.
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    using Register = void (*)(OperationCatalog&);
    const auto registerEntries =
        handle ? reinterpret_cast<Register>(::dlsym(handle, "wendrel_register_imaging_operations")) : nullptr;
    if (!registerEntries) {
        std::fprintf(stderr, "wendrel: this installation is incomplete: %s\n", ::dlerror());
        return false;
    }
    registerEntries(catalog);  // the module stays loaded: its entries live until the process exits
    return true;
}

#endif

}  // namespace wendrel
