/// @file
/// A node that is not the library's.
#pragma once

#include "VontalBase/text/astring.h"
#include "VontalBase/text/pstring.h"
#include "VontalBase/text/u8string.h"
#include "VontalBase/xml/Node.h"

#include <map>

namespace xmltest
{

/// A node that an application makes.
class OwnNode final : public qvxml::Node
{
public:
    OwnNode(IXMLDOMElement * element, int & alive) : m_element(element), m_alive(alive)
    {
        ++m_alive;
    }

    qvxml::Node * createChild(const char *) override
    {
        return nullptr;
    }
    qvxml::Node * createChild(const Vontal::u8string &) override
    {
        return nullptr;
    }
    qvxml::Node * createChild(const char *, const wchar_t *) override
    {
        return nullptr;
    }
    qvxml::Node * createChild(const char *, const Vontal::u8string &) override
    {
        return nullptr;
    }
    qvxml::Node * createChild(const char *, const char *) override
    {
        return nullptr;
    }
    IXMLDOMElement * getElement() override
    {
        return m_element;
    }
    Vontal::u8string getNodeName() override
    {
        return "own";
    }
    bool isNodeName(const char *) override
    {
        return false;
    }
    bool getText(Vontal::astring &) override
    {
        return false;
    }
    bool getText(Vontal::u8string &) override
    {
        return false;
    }
    void getProperties(std::map<Vontal::u8string, Vontal::u8string> &) override
    {
    }
    bool setProperty(const char *, unsigned int) override
    {
        return false;
    }
    bool setProperty(const char *, int) override
    {
        return false;
    }
    bool setProperty(const char *, bool) override
    {
        return false;
    }
    bool setProperty(const char *, const wchar_t *) override
    {
        return false;
    }
    bool setProperty(const char *, const char *) override
    {
        return false;
    }
    bool setProperty(const char *, const Vontal::pstring &) override
    {
        return false;
    }
    bool setProperty(const char *, const Vontal::astring &) override
    {
        return false;
    }
    bool setProperty(const char *, const Vontal::u8string &) override
    {
        return false;
    }
    bool getProperty(const char *, bool &) override
    {
        return false;
    }
    bool getProperty(const char *, double &) override
    {
        return false;
    }
    bool getProperty(const char *, unsigned int &) override
    {
        return false;
    }
    bool getProperty(const char *, int &) override
    {
        return false;
    }
    bool getProperty(const char *, Vontal::pstring &) override
    {
        return false;
    }
    bool getProperty(const char *, Vontal::astring &) override
    {
        return false;
    }
    bool getProperty(const char *, Vontal::u8string &) override
    {
        return false;
    }
    bool getProperty(
        const char *, const Vontal::u8string &, const Vontal::u8string &, Vontal::u8string &) override
    {
        return false;
    }
    qvxml::Node * getFirstChild(const char *) override
    {
        return nullptr;
    }
    qvxml::Node * getFirstChild() override
    {
        return nullptr;
    }
    qvxml::Node * getNextSibling(const char *) override
    {
        return nullptr;
    }
    qvxml::Node * getNextSibling() override
    {
        return nullptr;
    }

    ~OwnNode() override
    {
        --m_alive;
    }

private:
    IXMLDOMElement * m_element;
    int & m_alive;
};

} // namespace xmltest
