#include "json/scanner_oracle.h"

namespace jsontest
{

namespace
{

enum class State
{
    Go,
    Ok,
    ObjectOpen,
    Key,
    Colon,
    Value,
    ArrayOpen,
    String,
    Escape,
    U1,
    U2,
    U3,
    U4,
    Surrogate1,
    Surrogate2,
    Minus,
    Zero,
    Int,
    Dot,
    Frac,
    ExpSign,
    ExpDigit,
    ExpDigits,
    T1,
    T2,
    T3,
    F1,
    F2,
    F3,
    F4,
    N1,
    N2,
    N3
};

bool isWhite(int byte)
{
    return byte == 0x20 || byte == 0x0A || byte == 0x09 || byte == 0x0D;
}

bool isDigit(int byte)
{
    return byte >= '0' && byte <= '9';
}

bool isHexadecimal(int byte)
{
    return isDigit(byte) || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

unsigned int hexadecimalValue(char digit)
{
    return static_cast<unsigned int>(
        std::string_view("0123456789abcdef")
            .find(static_cast<char>(digit >= 'A' && digit <= 'F' ? digit - 'A' + 'a' : digit)));
}

class PlainScanner
{
public:
    explicit PlainScanner(const EventSink & sink) : sink_(sink)
    {
    }

    /// Takes one byte. Returns false if it stops the scan.
    bool take(int byte)
    {
        if (due_ > 0)
        {
            if (byte < 0x80 || byte > 0xBF)
                return false;
            --due_;
            return takeOther(byte);
        }
        if (byte >= 0x80)
        {
            if (byte <= 0xBF || byte >= 0xFE)
                return false;
            due_ = byte <= 0xDF ? 1 : byte <= 0xEF ? 2 : byte <= 0xF7 ? 3 : byte <= 0xFB ? 4 : 5;
            return takeOther(byte);
        }
        const bool hasNoClass =
            byte <= 0x08 || byte == 0x0B || byte == 0x0C || (byte >= 0x0E && byte <= 0x1F);
        return !hasNoClass && takeClassed(byte);
    }

private:
    /// A byte of a multi-byte sequence: at home in strings only.
    bool takeOther(int byte)
    {
        return state_ == State::String && push(byte);
    }

    bool takeClassed(int byte)
    {
        switch (state_)
        {
        case State::Go:
            return isWhite(byte) || opens(byte) || comment(byte);
        case State::Ok:
            return isWhite(byte) || closers(byte) || comment(byte);
        case State::ObjectOpen:
            return isWhite(byte) || (byte == '}' && objectEnd()) || (byte == '"' && go(State::String)) ||
                   comment(byte);
        case State::Key:
            return isWhite(byte) || (byte == '"' && go(State::String)) || comment(byte);
        case State::Colon:
            return isWhite(byte) || (byte == ':' && go(State::Value)) || comment(byte);
        case State::Value:
            return isWhite(byte) || opens(byte) || values(byte) || comment(byte);
        case State::ArrayOpen:
            return isWhite(byte) || opens(byte) || values(byte) || (byte == ']' && arrayEnd()) ||
                   comment(byte);
        case State::String:
            if (byte == '"')
                return stringClose();
            if (byte == '\\')
                return go(State::Escape);
            return byte != 0x0A && byte != 0x09 && byte != 0x0D && push(byte);
        case State::Escape:
            return escape(byte);
        case State::U1:
            return isHexadecimal(byte) && push(byte) && go(State::U2);
        case State::U2:
            return isHexadecimal(byte) && push(byte) && go(State::U3);
        case State::U3:
            return isHexadecimal(byte) && push(byte) && go(State::U4);
        case State::U4:
            return isHexadecimal(byte) && push(byte) && unicodeDecode();
        case State::Surrogate1:
            return byte == '\\' && go(State::Surrogate2);
        case State::Surrogate2:
            return byte == 'u' && go(State::U1);
        case State::Minus:
            return (byte == '0' && push(byte) && go(State::Zero)) ||
                   (byte >= '1' && byte <= '9' && push(byte) && go(State::Int));
        case State::Zero:
            return (isWhite(byte) && go(State::Ok)) || closers(byte) || point(byte) || comment(byte);
        case State::Int:
            return (isWhite(byte) && go(State::Ok)) || closers(byte) || (isDigit(byte) && push(byte)) ||
                   point(byte) || exponent(byte) || comment(byte);
        case State::Dot:
            return isDigit(byte) && push(byte) && go(State::Frac);
        case State::Frac:
            return (isWhite(byte) && go(State::Ok)) || closers(byte) || (isDigit(byte) && push(byte)) ||
                   exponent(byte) || comment(byte);
        case State::ExpSign:
            return ((byte == '+' || byte == '-') && push(byte) && go(State::ExpDigit)) ||
                   (isDigit(byte) && push(byte) && go(State::ExpDigits));
        case State::ExpDigit:
            return isDigit(byte) && push(byte) && go(State::ExpDigits);
        case State::ExpDigits:
            return (isWhite(byte) && go(State::Ok)) || closers(byte) || (isDigit(byte) && push(byte));
        case State::T1:
            return byte == 'r' && go(State::T2);
        case State::T2:
            return byte == 'u' && go(State::T3);
        case State::T3:
            return byte == 'e' && wordEnd(True);
        case State::F1:
            return byte == 'a' && go(State::F2);
        case State::F2:
            return byte == 'l' && go(State::F3);
        case State::F3:
            return byte == 's' && go(State::F4);
        case State::F4:
            return byte == 'e' && wordEnd(False);
        case State::N1:
            return byte == 'u' && go(State::N2);
        case State::N2:
            return byte == 'l' && go(State::N3);
        case State::N3:
            return byte == 'l' && wordEnd(Null);
        }
        return false;
    }

    bool go(State state)
    {
        state_ = state;
        return true;
    }

    bool push(int byte)
    {
        buffer_ += static_cast<char>(byte);
        return true;
    }

    bool deliver(EventNumber number)
    {
        const bool carriesText = number >= Integer && number <= Key;
        return sink_({number, carriesText ? buffer_ : std::string()});
    }

    bool flush()
    {
        const EventNumber number = pending_;
        pending_ = NoEvent;
        if (number == NoEvent)
            return true;
        const bool goesOn = deliver(number);
        buffer_.clear();
        return goesOn;
    }

    /// A comment is refused, after what is pending has gone out.
    bool comment(int byte)
    {
        if (byte == '/' || byte == '#')
            flush();
        return false;
    }

    bool opens(int byte)
    {
        if (byte == '{')
        {
            if (!deliver(ObjectBegin))
                return false;
            modes_ += 'o';
            expectingKey_ = true;
            return go(State::ObjectOpen);
        }
        if (byte == '[')
        {
            if (!deliver(ArrayBegin))
                return false;
            modes_ += 'a';
            return go(State::ArrayOpen);
        }
        return false;
    }

    bool values(int byte)
    {
        switch (byte)
        {
        case '"':
            return go(State::String);
        case 'f':
            return go(State::F1);
        case 'n':
            return go(State::N1);
        case 't':
            return go(State::T1);
        default:
            break;
        }
        if (byte != '-' && !isDigit(byte))
            return false;
        pending_ = Integer;
        push(byte);
        return go(byte == '-' ? State::Minus : byte == '0' ? State::Zero : State::Int);
    }

    bool closers(int byte)
    {
        return (byte == '}' && objectEnd()) || (byte == ']' && arrayEnd()) || (byte == ',' && comma());
    }

    bool popMode(char mode)
    {
        if (modes_.empty())
            return false;
        const char top = modes_.back();
        modes_.pop_back();
        return top == mode;
    }

    bool objectEnd()
    {
        if (!flush() || !popMode('o') || !deliver(ObjectEnd))
            return false;
        expectingKey_ = false;
        return go(State::Ok);
    }

    bool arrayEnd()
    {
        return flush() && popMode('a') && deliver(ArrayEnd) && go(State::Ok);
    }

    bool comma()
    {
        if (!flush() || modes_.empty())
            return false;
        if (modes_.back() == 'a')
            return go(State::Value);
        expectingKey_ = true;
        return go(State::Key);
    }

    bool stringClose()
    {
        const bool isKey = expectingKey_;
        if (!deliver(isKey ? jsontest::Key : jsontest::String))
            return false;
        buffer_.clear();
        expectingKey_ = false;
        return go(isKey ? State::Colon : State::Ok);
    }

    bool escape(int byte)
    {
        if (byte == 'u')
            return go(State::U1);
        const std::string_view letters = "\"\\/bfnrt";
        const std::string_view meanings = "\"\\/\x08\x0C\x0A\x0D\x09";
        const std::size_t index = letters.find(static_cast<char>(byte));
        return index != std::string_view::npos && push(meanings[index]) && go(State::String);
    }

    bool unicodeDecode()
    {
        unsigned int value = 0;
        for (const char digit : buffer_.substr(buffer_.size() - 4))
            value = value * 16 + hexadecimalValue(digit);
        buffer_.resize(buffer_.size() - 4);
        if (highSurrogate_ != 0)
        {
            if (value < 0xDC00 || value > 0xDFFF)
                return false;
            pushSequence(0x10000 + ((highSurrogate_ & 0x3FF) << 10) + (value & 0x3FF));
            highSurrogate_ = 0;
            return go(State::String);
        }
        if (value >= 0xDC00 && value <= 0xDFFF)
            return false;
        if (value >= 0xD800 && value <= 0xDBFF)
        {
            highSurrogate_ = value;
            return go(State::Surrogate1);
        }
        pushSequence(value);
        return go(State::String);
    }

    void pushSequence(unsigned int value)
    {
        const auto continuation = [this, value](int shift)
        {
            push(static_cast<int>(0x80 | (value >> shift & 0x3F)));
        };
        if (value < 0x80)
        {
            push(static_cast<int>(value));
        }
        else if (value < 0x800)
        {
            push(static_cast<int>(0xC0 | value >> 6));
            continuation(0);
        }
        else if (value < 0x10000)
        {
            push(static_cast<int>(0xE0 | value >> 12));
            continuation(6);
            continuation(0);
        }
        else
        {
            push(static_cast<int>(0xF0 | value >> 18));
            continuation(12);
            continuation(6);
            continuation(0);
        }
    }

    bool point(int byte)
    {
        if (byte != '.')
            return false;
        pending_ = Real;
        return push(byte) && go(State::Dot);
    }

    bool exponent(int byte)
    {
        if (byte != 'e' && byte != 'E')
            return false;
        pending_ = Real;
        return push(byte) && go(State::ExpSign);
    }

    bool wordEnd(EventNumber number)
    {
        pending_ = number;
        return go(State::Ok);
    }

    const EventSink & sink_;
    State state_ = State::Go;
    bool expectingKey_ = false;
    int due_ = 0;
    unsigned int highSurrogate_ = 0;
    EventNumber pending_ = NoEvent;
    std::string modes_;
    std::string buffer_;
};

} // namespace

bool scanPlainly(std::string_view text, const EventSink & sink)
{
    PlainScanner scanner(sink);
    for (const char byte : text)
    {
        if (!scanner.take(static_cast<unsigned char>(byte)))
            return false;
    }
    return true;
}

PlainScan scanPlainly(std::string_view text)
{
    PlainScan scan;
    scan.accepted = scanPlainly(text,
        [&scan](const Event & event)
        {
            scan.events.push_back(event);
            return true;
        });
    return scan;
}

PlainCalls callsPlainly(std::string_view text)
{
    PlainCalls calls;
    const auto withText = [](const char * call, const std::string & argument)
    {
        return std::string(call) + ' ' + std::to_string(argument.size()) + ' ' + argument + '\n';
    };
    calls.accepted = scanPlainly(text,
        [&](const Event & event)
        {
            switch (event.number)
            {
            case ArrayBegin:
                calls.log += "begin array\n";
                return true;
            case ObjectBegin:
                calls.log += "begin object\n";
                return true;
            case ArrayEnd:
                calls.log += "end array\n";
                return true;
            case ObjectEnd:
                calls.log += "end object\nend child\n";
                return true;
            case Integer:
                calls.log += withText("int", event.text);
                return true;
            case String:
                calls.log += withText("string", event.text);
                return true;
            case Key:
                calls.log += withText("key", event.text);
                return true;
            case True:
                calls.log += "true\n";
                return true;
            case False:
                calls.log += "false\n";
                return true;
            case Null:
                calls.log += "null\n";
                return true;
            default:
                // No acceptor takes a real number.
                calls.failures.emplace_back("Unexpected parser state");
                return false;
            }
        });
    if (!calls.accepted)
        calls.failures.emplace_back("Failed to parse JSON");
    return calls;
}

} // namespace jsontest
