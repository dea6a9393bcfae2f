#include "ElementHeads.h"

#include "ValueText.h"
#include "XmlText.h"

#include <cstdint>
#include <memory>

using namespace Pegasus;

namespace qel
{
namespace cimxml
{
namespace
{

inline std::uintptr_t identity(const String& text)
{
    return reinterpret_cast<std::uintptr_t>(text.getChar16Data());
}

inline size_t slotOf(std::uintptr_t h, size_t bits)
{
    // Fibonacci hashing: the top bits of the product mix every bit of the identities.
    return static_cast<size_t>((h * 0x9E3779B97F4A7C15ull) >> (64 - bits));
}

struct PropertyEntry
{
    bool used = false;
    String name;
    String referenceClass;
    String classOrigin;
    CIMType type = CIMTYPE_BOOLEAN;
    bool isArray = false;
    Uint32 arraySize = 0;
    bool propagated = false;
    std::string text;

    bool holds(const PropertyShape& s) const
    {
        return used && identity(name) == identity(s.name) && type == s.type &&
               isArray == s.isArray && arraySize == s.arraySize &&
               identity(classOrigin) == identity(s.classOrigin) &&
               identity(referenceClass) == identity(s.referenceClass) && propagated == s.propagated;
    }
};

struct KeyEntry
{
    bool used = false;
    String name;
    CIMKeyBinding::Type type = CIMKeyBinding::STRING;
    std::string text;
};

// Room for the properties of several classes, in sets of four ways: the properties of one
// class that hash alike take turns in a set instead of evicting each other on every
// instance. A miss costs no more than writing the tag.
struct Heads
{
    static constexpr size_t kPropertySetBits = 8;
    static constexpr size_t kWays = 4;
    static constexpr size_t kKeyBits = 6;
    PropertyEntry properties[(size_t(1) << kPropertySetBits) * kWays];
    Uint8 nextWay[size_t(1) << kPropertySetBits] = {};  // the way a miss replaces next
    // The entry used last for the property at each position of an instance: the instances
    // of an answer list the same properties in the same order, so this one is tried first.
    static constexpr size_t kPositions = 256;
    const PropertyEntry* byPosition[kPositions] = {};
    KeyEntry keys[size_t(1) << kKeyBits];
};

// On the heap, made on a thread's first use. Read through a plain thread-local pointer (one
// load: the writer asks for every property it writes); the owner frees it with its thread.
Heads& heads()
{
    static thread_local Heads* mine __attribute__((tls_model("initial-exec"))) = nullptr;
    if (mine)
        return *mine;
    thread_local std::unique_ptr<Heads> owner(new Heads());
    mine = owner.get();
    return *mine;
}

void writePropertyHead(XmlBuffer& out, const PropertyShape& s)
{
    if (s.type == CIMTYPE_REFERENCE)
        out += "<PROPERTY.REFERENCE";
    else if (s.isArray)
        out += "<PROPERTY.ARRAY";
    else
        out += "<PROPERTY";
    appendAttribute(out, "NAME", s.name);
    if (s.type == CIMTYPE_REFERENCE)
    {
        if (s.referenceClass.size() != 0)
            appendAttribute(out, "REFERENCECLASS", s.referenceClass);
    }
    else
    {
        appendTypeAttributes(out, s.type, "TYPE");
        if (s.isArray && s.arraySize != 0)
            appendAttribute(out, "ARRAYSIZE", std::to_string(s.arraySize).c_str());
    }
    if (s.classOrigin.size() != 0)
        appendAttribute(out, "CLASSORIGIN", s.classOrigin);
    if (s.propagated)
        appendAttribute(out, "PROPAGATED", "true");
    out += '>';
}

const char* keyValueType(CIMKeyBinding::Type type)
{
    return type == CIMKeyBinding::BOOLEAN   ? "boolean"
           : type == CIMKeyBinding::NUMERIC ? "numeric"
                                            : "string";
}

}  // namespace

void appendTypeAttributes(XmlBuffer& out, CIMType type, std::string_view attributeName)
{
    if (type == CIMTYPE_OBJECT || type == CIMTYPE_INSTANCE)
    {
        // Embedded objects travel as strings marked as such.
        appendAttribute(out, attributeName, "string");
        appendAttribute(out, "EmbeddedObject", type == CIMTYPE_OBJECT ? "object" : "instance");
    }
    else
    {
        appendAttribute(out, attributeName, typeAttribute(type));
    }
}

namespace
{
const PropertyEntry& propertyEntry(Heads& all, const PropertyShape& shape)
{
    const std::uintptr_t h = identity(shape.name) ^ (identity(shape.classOrigin) << 1) ^
                             (identity(shape.referenceClass) << 2) ^
                             (std::uintptr_t(shape.type) << 3) ^ shape.arraySize ^
                             (std::uintptr_t(shape.isArray) << 8) ^
                             (std::uintptr_t(shape.propagated) << 9);
    const size_t set = slotOf(h, Heads::kPropertySetBits);
    PropertyEntry* ways = &all.properties[set * Heads::kWays];
    for (size_t way = 0; way < Heads::kWays; ++way)
    {
        if (ways[way].holds(shape))
            return ways[way];
    }
    PropertyEntry& e = ways[all.nextWay[set]];
    all.nextWay[set] = static_cast<Uint8>((all.nextWay[set] + 1) % Heads::kWays);
    e.text.clear();
    {
        XmlBuffer text(e.text);
        writePropertyHead(text, shape);
    }
    e.name = shape.name;
    e.referenceClass = shape.referenceClass;
    e.classOrigin = shape.classOrigin;
    e.type = shape.type;
    e.isArray = shape.isArray;
    e.arraySize = shape.arraySize;
    e.propagated = shape.propagated;
    e.used = true;
    return e;
}
}  // namespace

void appendPropertyHead(XmlBuffer& out, const PropertyShape& shape, Uint32 position)
{
    Heads& all = heads();
    const PropertyEntry** last = position < Heads::kPositions ? &all.byPosition[position] : nullptr;
    if (last && *last && (*last)->holds(shape))
    {
        out += (*last)->text;
        return;
    }
    const PropertyEntry& e = propertyEntry(all, shape);
    if (last)
        *last = &e;
    out += e.text;
}

void appendKeyHead(XmlBuffer& out, const String& name, CIMKeyBinding::Type type)
{
    KeyEntry& e = heads().keys[slotOf(identity(name) ^ type, Heads::kKeyBits)];
    if (!e.used || identity(e.name) != identity(name) || e.type != type)
    {
        e.text.clear();
        XmlBuffer text(e.text);
        text += "<KEYBINDING";
        appendAttribute(text, "NAME", name);
        text += "><KEYVALUE";
        appendAttribute(text, "VALUETYPE", keyValueType(type));
        text += '>';
        text.flush();
        e.name = name;
        e.type = type;
        e.used = true;
    }
    out += e.text;
}

}  // namespace cimxml
}  // namespace qel
