// FenwickBase: foundation of the VelmarBase project.
#include "base/XMLStringRes.h"
#include "base/BFile.h"
#include "base/BMap.h"
#include "base/MEM.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <cstring>
#include <memory>

#include <pugixml.hpp>

namespace
{
struct Texts
{
    BMap<std::int64_t, BString> byKey;
    bool loaded = false;
};

// Lives until the process ends, so that destructors of other statics can still ask for texts.
Texts& Current()
{
    static Texts* const texts = new Texts;
    return *texts;
}

std::int64_t KeyOf(std::int32_t table, std::int32_t entry)
{
    return std::int64_t(table) << 32 | std::int64_t(std::uint32_t(entry));
}

bool ReadId(const pugi::xml_node& node, std::int32_t& id)
{
    const char* const text = node.attribute("id").value();
    const char* const end = text + std::strlen(text);
    const std::from_chars_result read = std::from_chars(text, end, id);
    return read.ec == std::errc() && read.ptr == end;
}

// What is wrong with a document, and how many bytes before it.
struct Fault
{
    BString what;
    std::ptrdiff_t offset = 0;
};

bool Collect(const pugi::xml_document& document, Texts& into, Fault& fault)
{
    const pugi::xml_node strings = document.child("strings");
    if (!strings)
    {
        fault.what = "no <strings> element, expected it as the root";
        return false;
    }
    for (const pugi::xml_node table : strings.children("table"))
    {
        std::int32_t tableId = 0;
        bool sound = ReadId(table, tableId);
        if (!sound)
            fault = {"<table> without a whole number as its id", table.offset_debug()};
        for (const pugi::xml_node entry : table.children("entry"))
        {
            std::int32_t entryId = 0;
            if (sound && !(sound = ReadId(entry, entryId)))
                fault = {"<entry> without a whole number as its id", entry.offset_debug()};
            if (!sound)
                break;
            if (!into.byKey.Set(KeyOf(tableId, entryId), BString(entry.text().get())))
            {
                fault.what = "out of memory";
                return false;
            }
        }
        if (!sound)
            return false;
    }
    return true;
}

std::int64_t LineAt(std::string_view text, std::ptrdiff_t offset)
{
    const std::size_t before = std::min(text.size(), std::size_t(std::max<std::ptrdiff_t>(offset, 0)));
    return 1 + std::count(text.begin(), text.begin() + std::ptrdiff_t(before), '\n');
}

// Parses a copy of the text, so that lines can still be counted in it afterwards.
BString Parse(std::string_view text, Texts& into)
{
    pugi::xml_document document;
    const pugi::xml_parse_result parsed = document.load_buffer(text.data(), text.size());
    Fault fault;
    if (!parsed)
        fault = {parsed.description(), parsed.offset};
    else if (Collect(document, into, fault))
        return {};
    return BString::Format("line %lld: %s", static_cast<long long>(LineAt(text, fault.offset)), fault.what.CString());
}
} // namespace

int XMLStringRes::Load(const BPath& path, BString* error)
{
    BString why;
    Texts fresh;
    BFile file(path);
    char* const text = file.Open(BFile::Mode::Read) == 0 ? file.ReadAll() : nullptr;
    if (text)
        why = Parse({text, MEM_Count(text)}, fresh);
    else
        why = file.LastError();
    MEM_Free(text);
    if (!why.IsEmpty())
    {
        if (error)
            *error = path.FullPath() + ": " + why;
        return -1;
    }
    fresh.loaded = true;
    std::swap(Current(), fresh);
    return 0;
}

void XMLStringRes::Unload() { Current() = Texts(); }

bool XMLStringRes::IsLoaded() { return Current().loaded; }

BString XMLStringRes::Get(int table, int entry, const char* fallback)
{
    const BString* const text = Current().byKey.Find(KeyOf(table, entry));
    return text ? *text : BString(fallback);
}
