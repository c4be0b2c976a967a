// Takes a text with options apart, and adds up the numbers in one of them.

#include "VontalBase/VontalBase.h"

#include <iostream>
#include <list>
#include <string>

namespace
{

using qvparse::LexAnal;

// Adds up numbers with + between them, such as "10 + 5".
bool addUp(const std::string & text, int & sum, VontalException & failure)
{
    LexAnal cursor;
    LexAnal::Token token = cursor.start(text.c_str());
    sum = 0;
    while (token != LexAnal::End)
    {
        std::string digits;
        for (; token == LexAnal::Digit; token = cursor.getNext())
            digits += cursor.getChar();
        if (digits.empty() && token != LexAnal::Space && cursor.getChar() != '+')
        {
            failure.add(__FILE__, __LINE__, Vontal::U8StringBuilder().append("Not a sum: ").append(text));
            return false;
        }
        sum += static_cast<int>(Vontal::string2UInt(digits));
        if (digits.empty())
            token = cursor.getNext();
    }
    return true;
}

} // namespace

int main()
{
    qvparse::SemicolonSeparatedOptions options;
    VontalException failure;
    options.parse("user=Anna;sizes=10 + 5;roots=C:\\data|D:\\old", failure);

    std::string sizes;
    int sum = 0;
    if (options.get("sizes", sizes) && addUp(sizes, sum, failure))
        std::cout << "sum of the sizes: " << sum << '\n';
    if (!addUp("10 - 5", sum, failure))
        std::cout << failure.format() << '\n';

    std::string roots;
    std::list<std::string> items;
    if (options.get("roots", roots))
        qvparse::splitString(roots, items, '|');
    for (const std::string & item : items)
        std::cout << "root: " << item << '\n';

    options.remove("roots");
    options.set("user", "Bruno");
    std::string text;
    options.store(text);
    std::cout << text << '\n';

    const qvparse::CommandLineParser line(Vontal::u8string("copy \"my file\" target"));
    Vontal::u8string word;
    for (unsigned int i = 0; line.get_argv(i, word); ++i)
        std::cout << "word: " << word << '\n';
    return 0;
}
