#include "LayerModules.h"

#include "CommandLine.h"
#include "operations/ContentType.h"

#include <algorithm>

#ifdef WENDREL_MODULES_LINKED
#include "imaging/ImagingOperations.h"
#include "media/MediaOperations.h"
#else
#include <cstdio>
#include <string>

#include <dlfcn.h>
#endif

namespace wendrel {

namespace {

const QList<LayerModule> allModules{LayerModule::imaging, LayerModule::media};

bool isMediaEntryId(const QString& id)
{
    return id.startsWith(u"media.") || id.startsWith(u"video.") || id.startsWith(u"audio.");
}

}  // namespace

QString entryIdOfRun(const QStringList& arguments)
{
    // The command line's own options that take no value; every other option takes one.
    static const QStringList flags{QStringLiteral("-v"),       QStringLiteral("--verbose"),
                                   QStringLiteral("-h"),       QStringLiteral("--help"),
                                   QStringLiteral("--json"),   QStringLiteral("--version"),
                                   QStringLiteral("--remove"), QStringLiteral("--all")};
    QStringList words;
    for (qsizetype i = 1; i < arguments.size() && words.size() < 2; ++i) {
        const QString& argument = arguments.at(i);
        if (argument == u"--") {
            words += arguments.mid(i + 1, 2 - words.size());
            break;
        }
        if (!argument.startsWith(u'-') || argument == u"-")
            words.append(argument);
        else if (!flags.contains(argument) && !argument.contains(u'='))
            ++i;  // the option's value
    }
    return words.size() == 2 && words.first() == u"run" ? words.last() : QString();
}

namespace {

// The files an `ops` lists entries for: its arguments that aren't options (a missing one is
// judged by its name; ops then says it is missing). Empty for any other command and for
// `ops --all`, which lists everything.
QStringList filesOfOps(const QStringList& arguments)
{
    if (arguments.size() < 2 || arguments.at(1) != u"ops" || arguments.contains(u"--all"))
        return {};
    QStringList files;
    for (qsizetype i = 2; i < arguments.size(); ++i) {
        if (!arguments.at(i).startsWith(u'-'))
            files.append(arguments.at(i));
    }
    return files;
}

}  // namespace

QList<LayerModule> modulesToLoadFirst(const QStringList& arguments, const OperationCatalog& catalog)
{
    if (runsEntryOf(arguments, catalog))
        return {};
    const QString entry = entryIdOfRun(arguments);
    if (!entry.isEmpty())
        return {isMediaEntryId(entry) ? LayerModule::media : LayerModule::imaging};
    // The entries that fit files come from the layers of their types: sound and movies from
    // the media layer, everything else (pictures, PDFs, folders) from imaging.
    const QStringList files = filesOfOps(arguments);
    if (files.isEmpty())
        return allModules;
    QList<LayerModule> modules;
    const auto anyFile = [&](auto predicate) { return std::any_of(files.begin(), files.end(), predicate); };
    if (anyFile([](const QString& file) {
            const ContentType type = ContentType::ofFile(file);
            return type.conformsTo(ContentType::image()) || !type.conformsTo(ContentType::audiovisualContent());
        }))
        modules.append(LayerModule::imaging);
    if (anyFile([](const QString& file) { return ContentType::ofFile(file).conformsTo(ContentType::audiovisualContent()); }))
        modules.append(LayerModule::media);
    return modules;
}

void addLayerOperationsFor(const QStringList& arguments, OperationCatalog& catalog)
{
    const QList<LayerModule> first = modulesToLoadFirst(arguments, catalog);
    for (const LayerModule module : first)
        addLayerOperations(module, catalog);
    // A run the first module didn't serve (an option only another layer knows, an id nobody
    // has) looks in the rest before it says so.
    if (entryIdOfRun(arguments).isEmpty() || first.isEmpty() || runsEntryOf(arguments, catalog))
        return;
    for (const LayerModule module : allModules) {
        if (!first.contains(module))
            addLayerOperations(module, catalog);
    }
}

#ifdef WENDREL_MODULES_LINKED

bool addLayerOperations(LayerModule module, OperationCatalog& catalog)
{
    switch (module) {
    case LayerModule::imaging:
        registerImagingOperations(catalog);
        break;
    case LayerModule::media:
        registerMediaOperations(catalog);
        break;
    }
    return true;
}

#else

bool addLayerOperations(LayerModule module, OperationCatalog& catalog)
{
    const char* fileName = module == LayerModule::imaging ? "wendrel-imaging.so" : "wendrel-media.so";
    const char* entryPoint = module == LayerModule::imaging ? "wendrel_register_imaging_operations"
                                                            : "wendrel_register_media_operations";
    // Beside this module, wherever it was installed.
    Dl_info self{};
    if (!::dladdr(reinterpret_cast<void*>(&addLayerOperationsFor), &self) || !self.dli_fname)
        return false;
    const std::string path = std::string(self.dli_fname).substr(0, std::string(self.dli_fname).rfind('/') + 1) + fileName;

    // The module finds the operations core in this one, which the executable loaded globally.
    // Functions bound at their first call: the media module's libraries alone hold tens of
    // thousands of symbols, and binding them all up front doubled its load time. Linking
    // with --no-undefined has already proven that every one of them resolves.
    void* handle = ::dlopen(path.c_str(), RTLD_LAZY | RTLD_LOCAL);
    using Register = void (*)(OperationCatalog&);
    const auto registerEntries = handle ? reinterpret_cast<Register>(::dlsym(handle, entryPoint)) : nullptr;
    if (!registerEntries) {
        std::fprintf(stderr, "wendrel: this installation is incomplete: %s\n", ::dlerror());
        return false;
    }
    registerEntries(catalog);  // the module stays loaded: its entries live until the process exits
    return true;
}

#endif

}  // namespace wendrel
