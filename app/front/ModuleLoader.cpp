#include "ModuleLoader.h"

#include <cstdio>
#include <string>

#include <dlfcn.h>
#include <limits.h>
#include <unistd.h>

namespace wendrel {

#ifdef WENDREL_MODULES_LINKED

extern "C" int wendrel_command_line_main(int argc, char** argv);
extern "C" int wendrel_agent_main(int argc, char** argv);

int runModule(Module module, int argc, char** argv)
{
    return module == Module::agent ? wendrel_agent_main(argc, argv) : wendrel_command_line_main(argc, argv);
}

#else

namespace {

// The executable's own folder, resolved through links: a symbolic link in ~/bin must still
// find the modules installed beside the real file.
std::string executableFolder()
{
    char path[PATH_MAX];
    const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path - 1);
    if (length <= 0)
        return ".";
    const std::string executable(path, static_cast<size_t>(length));
    return executable.substr(0, executable.rfind('/'));
}

}  // namespace


int runModule(Module module, int argc, char** argv)
{
    const bool agent = module == Module::agent;
    // Relative to the executable, as built and as installed (bin/ and lib/wendrel/).
    const std::string path = executableFolder() + "/" WENDREL_MODULE_FOLDER "/" +
                             (agent ? "wendrel-agent.so" : "wendrel-cli.so");
    // Globally: the imaging module the command line may load finds the operations core in it.
    void* handle = ::dlopen(path.c_str(), RTLD_LAZY | (agent ? RTLD_LOCAL : RTLD_GLOBAL));
    if (!handle) {
        std::fprintf(stderr, "wendrel: this installation is incomplete: %s\n", ::dlerror());
        return 1;
    }
    using Entry = int (*)(int, char**);
    const auto entry = reinterpret_cast<Entry>(::dlsym(handle, agent ? "wendrel_agent_main" : "wendrel_command_line_main"));
    if (!entry) {
        std::fprintf(stderr, "wendrel: this installation is incomplete: %s\n", ::dlerror());
        return 1;
    }
    // The module stays loaded: its objects live until the process exits.
    return entry(argc, argv);
}

#endif

}  // namespace wendrel
