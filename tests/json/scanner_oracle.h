/// @file
/// The language of the JSON scanner stated a second time: slowly, plainly, a byte at a time.
///
/// It is what the tests and fuzz targets hold the library against, shares no code with it, and is itself
/// tested on cases written by hand.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace jsontest
{

/// The events, by the numbers that the dispatcher tests.
enum EventNumber
{
    NoEvent = 0,
    ArrayBegin = 1,
    ObjectBegin = 2,
    ArrayEnd = 3,
    ObjectEnd = 4,
    Integer = 5,
    Real = 6,
    String = 7,
    Key = 8,
    True = 9,
    False = 10,
    Null = 11
};

/// An event; the text only for those that carry one.
struct Event
{
    EventNumber number = NoEvent;
    std::string text;

    friend bool operator==(const Event &, const Event &) = default;
};

/// Takes an event and answers whether to go on.
using EventSink = std::function<bool(const Event &)>;

/// Scans the text. Returns false if it was stopped, by the scanner's own rules or by the sink.
bool scanPlainly(std::string_view text, const EventSink & sink);

/// What a scan gave.
struct PlainScan
{
    std::vector<Event> events;
    bool accepted = false;
};

/// Scans the text with a sink that takes everything.
PlainScan scanPlainly(std::string_view text);

/// What an acceptor that takes everything for itself is called with, one line a call, and what the failure
/// record then says.
struct PlainCalls
{
    std::string log;
    std::vector<std::string> failures;
    bool accepted = false;
};

/// The calls that a parse of the text makes of an acceptor that answers itself for every object.
PlainCalls callsPlainly(std::string_view text);

} // namespace jsontest
