#include "VontalBase/text/ml_u8string.h"

#include "VontalBase/concurrency/ThreadMutexGuard.h"
#include "VontalBase/text/mlregistry.h"
#include "VontalBase/xml/Node.h"

#include <algorithm>
#include <cctype>

namespace Vontal
{

namespace
{

using Translations = std::map<std::string, u8string>;

std::string upperCase(std::string text)
{
    const auto upper = [](char byte)
    {
        return static_cast<char>(std::toupper(static_cast<unsigned char>(byte)));
    };
    std::transform(text.begin(), text.end(), text.begin(), upper);
    return text;
}

} // namespace

ml_u8string::ml_u8string() : ml_u8string(u8string())
{
}

ml_u8string::ml_u8string(const u8string & defaultValue)
    : m_preferredLanguage(upperCase(mlDefaultLanguage)), m_defaultValue(defaultValue),
      m_translations(std::make_unique<Translations>())
{
    registerMlU8Manager();
}

ml_u8string::ml_u8string(const ml_u8string & other)
    : m_preferredLanguage(other.m_preferredLanguage), m_defaultValue(other.m_defaultValue),
      m_translations(std::make_unique<Translations>(*other.m_translations))
{
    registerMlU8Manager();
}

ml_u8string::~ml_u8string()
{
    unregisterMlU8Manager();
}

ml_u8string & ml_u8string::operator=(const ml_u8string & other)
{
    if (this == &other)
        return *this;
    m_preferredLanguage = other.m_preferredLanguage;
    m_defaultValue = other.m_defaultValue;
    // Kept: translations that the other one lacks are not removed.
    for (const auto & [language, text] : *other.m_translations)
        (*m_translations)[language] = text;
    return *this;
}

bool ml_u8string::add(const std::string & language, const u8string & text)
{
    (*m_translations)[upperCase(language)] = text;
    return true;
}

const u8string & ml_u8string::get() const
{
    const auto found = m_translations->find(m_preferredLanguage);
    return found != m_translations->end() ? found->second : m_defaultValue;
}

const u8string & ml_u8string::getDefaultValue() const noexcept
{
    return m_defaultValue;
}

const std::string & ml_u8string::getPrefLanguage() const noexcept
{
    return m_preferredLanguage;
}

void ml_u8string::setPrefLanguage(const std::string & language)
{
    m_preferredLanguage = upperCase(language);
}

bool ml_u8string::read(qvxml::Node * parent, u8string & tagName)
{
    bool isAnyRead = false;
    qvxml::Node * child = parent != nullptr ? parent->getFirstChild(tagName.c_str()) : nullptr;
    for (; child != nullptr; child = child->getNextSibling(tagName.c_str()))
    {
        u8string language("C");
        child->getProperty("xml:lang", language);
        u8string text;
        if (!child->getText(text))
            continue;
        isAnyRead = true;
        // Kept: a lower-case "c" is a language like any other here.
        if (language != "C")
            add(language, text);
        else if (m_defaultValue.empty())
            m_defaultValue = text;
    }
    return isAnyRead;
}

void ml_u8string::registerMlU8Manager()
{
    const qvbase::ThreadMutexGuard guard(mlLock, true);
    m_next = newestMl;
    if (m_next != nullptr)
        m_next->m_previous = this;
    newestMl = this;
}

void ml_u8string::unregisterMlU8Manager()
{
    const qvbase::ThreadMutexGuard guard(mlLock, true);
    (m_previous != nullptr ? m_previous->m_next : newestMl) = m_next;
    if (m_next != nullptr)
        m_next->m_previous = m_previous;
}

void ml_u8string_set_default_language(const std::string & language)
{
    const qvbase::ThreadMutexGuard guard(mlLock, true);
    mlDefaultLanguage = language;
    const std::string preferred = upperCase(language);
    for (ml_u8string * live = newestMl; live != nullptr; live = live->m_next)
        live->m_preferredLanguage = preferred;
}

} // namespace Vontal
