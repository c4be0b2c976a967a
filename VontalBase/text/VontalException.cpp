#include "VontalBase/text/VontalException.h"

#include "VontalBase/text/sourcepaths.h"

#include <memory>
#include <string>
#include <utility>
#include <vector>

VontalExceptionDescription::VontalExceptionDescription(VontalExceptionDescription * nextEntry,
    const Vontal::u8string & fileName, int lineNumber, const Vontal::u8string & message)
    : file(qvbase::trimSourcePath(fileName.c_str())), line(lineNumber), text(message), next(nextEntry)
{
}

VontalExceptionDescription::~VontalExceptionDescription()
{
    VontalExceptionDescription * older = std::exchange(next, nullptr);
    while (older != nullptr)
    {
        VontalExceptionDescription * const entry = older;
        older = std::exchange(entry->next, nullptr);
        delete entry;
    }
}

namespace
{

void renderEntry(const VontalExceptionDescription & entry, std::string & out)
{
    if (!entry.file.empty())
        out.append(entry.file).push_back(':');
    // Kept: only a line is followed by a blank, and line 0 is one.
    if (entry.line >= 0)
        out.append(std::to_string(entry.line)).append(": ");
    out.append(entry.text);
}

} // namespace

Vontal::u8string VontalExceptionDescription::render() const
{
    std::vector<const VontalExceptionDescription *> entries;
    for (const VontalExceptionDescription * entry = this; entry != nullptr; entry = entry->next)
        entries.push_back(entry);

    Vontal::u8string out;
    for (auto oldest = entries.rbegin(); oldest != entries.rend(); ++oldest)
    {
        if (oldest != entries.rbegin())
            out.push_back('\n');
        renderEntry(**oldest, out);
    }
    return out;
}

VontalExceptionDescription * VontalExceptionDescription::clone() const
{
    auto newest = std::make_unique<VontalExceptionDescription>(nullptr, file, line, text);
    VontalExceptionDescription * last = newest.get();
    for (const VontalExceptionDescription * entry = next; entry != nullptr; entry = entry->next)
    {
        last->next = new VontalExceptionDescription(nullptr, entry->file, entry->line, entry->text);
        last = last->next;
    }
    return newest.release();
}

int VontalExceptionDescription::equals(const VontalExceptionDescription * other) const
{
    const VontalExceptionDescription * entry = this;
    while (entry != nullptr && other != nullptr)
    {
        if (entry->file != other->file || entry->line != other->line || entry->text != other->text)
            return -1;
        entry = entry->next;
        other = other->next;
    }
    return entry == nullptr && other == nullptr ? 0 : -1;
}

VontalException::VontalException(const VontalException & other)
    : first(other.first == nullptr ? nullptr : other.first->clone())
{
}

VontalException::VontalException(const Vontal::u8string & file, int line, const Vontal::u8string & text)
    : first(new VontalExceptionDescription(nullptr, file, line, text))
{
}

VontalException::~VontalException()
{
    delete first;
}

// Kept: there is no test for self-assignment.
// NOLINTNEXTLINE(bugprone-unhandled-self-assignment): required as it is.
VontalException & VontalException::operator=(const VontalException & other)
{
    clear();
    if (other.first != nullptr)
        first = other.first->clone();
    return *this;
}

void VontalException::clear()
{
    delete std::exchange(first, nullptr);
}

void VontalException::add(const Vontal::u8string & file, int line, const Vontal::u8string & text)
{
    first = new VontalExceptionDescription(first, file, line, text);
}

void VontalException::append(const VontalException & other)
{
    if (other.first == nullptr)
        return;
    VontalExceptionDescription * const copy = other.first->clone();
    VontalExceptionDescription * oldest = copy;
    while (oldest->next != nullptr)
        oldest = oldest->next;
    oldest->next = first;
    first = copy;
}

int VontalException::compare(const VontalException & other) const
{
    if (first == nullptr)
        return other.first == nullptr ? 0 : -1;
    return first->equals(other.first);
}

Vontal::u8string VontalException::format() const
{
    return first == nullptr ? Vontal::u8string() : first->render();
}
