/// Objects that write down what their counting makes of them.
#pragma once

#include "VontalBase/core/ReferencedObject.h"

#include <functional>
#include <string>
#include <utility>

/// The interface of a counted object in the tests: it has its virtual destructor behind the two operations.
class Shape : public qvbase::ReferencedObject
{
public:
    Shape() = default;
    Shape(const Shape &) = delete;
    Shape & operator=(const Shape &) = delete;
    virtual ~Shape() = default;
};

/// A pointee that only notes each call, so that the order of calls can be compared. Nothing destroys it.
class Noted final : public Shape
{
public:
    /// @param noteName its name in `noteLog`.
    Noted(std::string noteName, std::string & noteLog) : name(std::move(noteName)), log(noteLog)
    {
    }

    void addRef() override
    {
        log += "+" + name + " ";
        ++count;
        if (onAddRef)
            onAddRef();
    }

    void release() override
    {
        log += "-" + name + " ";
        --count;
        if (onRelease)
            onRelease();
    }

    /// Called within the operation, to look at what the holder has at that moment.
    std::function<void()> onAddRef;
    std::function<void()> onRelease;
    std::string name;
    std::string & log;
    int count = 0;
};

/// A concrete class as the two wrappers take it; it tells of its end.
class Circle : public Shape
{
public:
    explicit Circle(int & destructions) : m_destructions(&destructions)
    {
    }
    Circle(int & destructions, std::function<void()> onDestruction)
        : m_destructions(&destructions), m_onDestruction(std::move(onDestruction))
    {
    }
    ~Circle() override
    {
        ++*m_destructions;
        if (m_onDestruction)
            m_onDestruction();
    }

private:
    int * m_destructions;
    std::function<void()> m_onDestruction;
};
