#pragma once

#include <qpdf/QPDF.hh>
#include <qpdf/QPDFObjectHandle.hh>

#include <string>

namespace wendrel {

// `object`, read from `source`, as an object of `target` with every reference it holds
// following qpdf's record of what was copied already: a reference to a page copied before
// becomes a reference to that copy. Containers come back direct, the way they are usually
// written inside a bookmark or a link.
//
// qpdf copies only indirect objects, so a direct one is first made indirect in the source,
// which is only ever read, never written.
inline QPDFObjectHandle foreignCopy(QPDF& target, QPDF& source, QPDFObjectHandle object)
{
    if (object.isScalar() && !object.isIndirect())
        return object.isString() ? QPDFObjectHandle::newString(object.getStringValue())
                                 : QPDFObjectHandle::parse(object.unparse());
    QPDFObjectHandle copy = target.copyForeignObject(object.isIndirect() ? object : source.makeIndirectObject(object));
    return !object.isIndirect() && (copy.isArray() || copy.isDictionary()) ? copy.shallowCopy() : copy;
}

// A destination's name, whichever kind it is: the name object of the catalog's /Dests
// dictionary ("/Chapter1") or the byte string of the /Names /Dests tree. Empty for an
// explicit destination.
struct DestinationName {
    bool isString = false;
    std::string bytes;  // a name's text with its slash, a string's raw bytes

    friend bool operator<(const DestinationName& a, const DestinationName& b)
    {
        return a.isString != b.isString ? a.isString < b.isString : a.bytes < b.bytes;
    }
    friend bool operator==(const DestinationName&, const DestinationName&) = default;
};

inline bool isDestinationName(QPDFObjectHandle object) { return object.isName() || object.isString(); }

inline DestinationName destinationNameOf(QPDFObjectHandle object)
{
    return object.isName() ? DestinationName{false, object.getName()} : DestinationName{true, object.getStringValue()};
}

inline QPDFObjectHandle destinationNameObject(const DestinationName& name)
{
    return name.isString ? QPDFObjectHandle::newString(name.bytes) : QPDFObjectHandle::newName(name.bytes);
}

}  // namespace wendrel
