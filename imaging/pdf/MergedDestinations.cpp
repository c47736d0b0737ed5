#include "MergedDestinations.h"

#include <set>
#include <string>
#include <utility>
#include <vector>

namespace wendrel {

namespace {

// A hostile file may nest trees and action chains without end; real ones stay far below.
constexpr int deepestNesting = 32;
// Pairs per leaf of the name tree written: readers look a name up in two short steps.
constexpr size_t namesPerLeaf = 128;

using NamedDestinations = std::vector<std::pair<DestinationName, QPDFObjectHandle>>;

void collectNameTree(QPDFObjectHandle node, std::set<QPDFObjGen>& seen, int depth, NamedDestinations& found)
{
    if (!node.isDictionary() || depth > deepestNesting || (node.isIndirect() && !seen.insert(node.getObjGen()).second))
        return;
    QPDFObjectHandle names = node.getKey("/Names");
    if (names.isArray()) {
        for (int i = 0; i + 1 < names.getArrayNItems(); i += 2) {
            QPDFObjectHandle key = names.getArrayItem(i);
            if (key.isString())
                found.emplace_back(destinationNameOf(key), names.getArrayItem(i + 1));
        }
    }
    QPDFObjectHandle kids = node.getKey("/Kids");
    if (kids.isArray()) {
        for (QPDFObjectHandle kid : kids.aitems())
            collectNameTree(kid, seen, depth + 1, found);
    }
}

NamedDestinations namedDestinationsOf(QPDF& source)
{
    NamedDestinations found;
    QPDFObjectHandle root = source.getRoot();
    QPDFObjectHandle dests = root.getKey("/Dests");
    if (dests.isDictionary()) {
        for (const auto& [key, value] : dests.ditems())
            found.emplace_back(DestinationName{false, key}, value);
    }
    QPDFObjectHandle names = root.getKey("/Names");
    if (names.isDictionary()) {
        std::set<QPDFObjGen> seen;
        collectNameTree(names.getKey("/Dests"), seen, 0, found);
    }
    return found;
}

// `name` followed by "-2", "-3"… until neither the merged document nor the source has it.
DestinationName freeName(const DestinationName& name, const std::map<DestinationName, QPDFObjectHandle>& taken,
                         const std::set<DestinationName>& ownNames)
{
    for (int counter = 2;; ++counter) {
        DestinationName candidate{name.isString, name.bytes + "-" + std::to_string(counter)};
        if (!taken.contains(candidate) && !ownNames.contains(candidate))
            return candidate;
    }
}

void renameInAction(QPDFObjectHandle action, const DestinationRenames& renames, int depth)
{
    if (depth > deepestNesting)
        return;
    if (action.isArray()) {
        for (QPDFObjectHandle next : action.aitems())
            renameInAction(next, renames, depth + 1);
        return;
    }
    if (!action.isDictionary())
        return;
    // Only a go-to action names a destination of this document; /GoToR names one elsewhere.
    QPDFObjectHandle destination = action.getKey("/D");
    if (action.getKey("/S").isNameAndEquals("/GoTo") && isDestinationName(destination)) {
        const auto renamed = renames.find(destinationNameOf(destination));
        if (renamed != renames.end())
            action.replaceKey("/D", destinationNameObject(renamed->second));
    }
    if (action.hasKey("/Next"))
        renameInAction(action.getKey("/Next"), renames, depth + 1);
}

QPDFObjectHandle nameTreeNode(const NamedDestinations& entries, size_t begin, size_t end, bool withLimits)
{
    QPDFObjectHandle names = QPDFObjectHandle::newArray();
    for (size_t i = begin; i < end; ++i) {
        names.appendItem(destinationNameObject(entries[i].first));
        names.appendItem(entries[i].second);
    }
    QPDFObjectHandle node = QPDFObjectHandle::newDictionary();
    node.replaceKey("/Names", names);
    if (withLimits) {
        node.replaceKey("/Limits", QPDFObjectHandle::newArray(std::vector<QPDFObjectHandle>{
                                       destinationNameObject(entries[begin].first),
                                       destinationNameObject(entries[end - 1].first)}));
    }
    return node;
}

// A name tree of `entries`, already in byte order: one node when they are few, else a root
// whose kids are leaves of namesPerLeaf names each.
QPDFObjectHandle nameTree(QPDF& target, const NamedDestinations& entries)
{
    if (entries.size() <= namesPerLeaf)
        return target.makeIndirectObject(nameTreeNode(entries, 0, entries.size(), false));
    QPDFObjectHandle kids = QPDFObjectHandle::newArray();
    for (size_t begin = 0; begin < entries.size(); begin += namesPerLeaf)
        kids.appendItem(target.makeIndirectObject(
            nameTreeNode(entries, begin, std::min(entries.size(), begin + namesPerLeaf), true)));
    QPDFObjectHandle root = QPDFObjectHandle::newDictionary();
    root.replaceKey("/Kids", kids);
    return target.makeIndirectObject(root);
}

}  // namespace

DestinationRenames MergedDestinations::add(QPDF& target, QPDF& source)
{
    const NamedDestinations found = namedDestinationsOf(source);
    std::set<DestinationName> ownNames;
    for (const auto& entry : found)
        ownNames.insert(entry.first);

    DestinationRenames renames;
    std::set<DestinationName> added;
    for (const auto& [name, destination] : found) {
        // A name the source itself defines twice keeps its first destination, as readers do.
        if (!added.insert(name).second)
            continue;
        DestinationName placed = name;
        if (m_destinations.contains(name)) {
            placed = freeName(name, m_destinations, ownNames);
            renames.emplace(name, placed);
        }
        m_destinations.emplace(placed, foreignCopy(target, source, destination));
    }
    return renames;
}

void MergedDestinations::install(QPDF& target) const
{
    QPDFObjectHandle dests = QPDFObjectHandle::newDictionary();
    NamedDestinations strings;
    for (const auto& [name, destination] : m_destinations) {
        if (name.isString)
            strings.emplace_back(name, destination);  // the map's order is the bytes' order
        else
            dests.replaceKey(name.bytes, destination);
    }
    QPDFObjectHandle root = target.getRoot();
    if (!dests.getKeys().empty())
        root.replaceKey("/Dests", target.makeIndirectObject(dests));
    if (!strings.empty()) {
        QPDFObjectHandle names = QPDFObjectHandle::newDictionary();
        names.replaceKey("/Dests", nameTree(target, strings));
        root.replaceKey("/Names", names);
    }
}

void renameDestinationReferences(QPDFObjectHandle holder, const DestinationRenames& renames)
{
    if (renames.empty() || !holder.isDictionary())
        return;
    QPDFObjectHandle destination = holder.getKey("/Dest");
    if (isDestinationName(destination)) {
        const auto renamed = renames.find(destinationNameOf(destination));
        if (renamed != renames.end())
            holder.replaceKey("/Dest", destinationNameObject(renamed->second));
    }
    renameInAction(holder.getKey("/A"), renames, 0);
}

}  // namespace wendrel
