/// @file
/// What the parser makes of a text, stated a second time in plain steps over the plain scanner; and a tree of
/// the library as text, for comparison.
#pragma once

#include "VontalBase/json/Item.h"

#include <string>
#include <string_view>
#include <vector>

namespace jsontest
{

struct PlainTree
{
    bool accepted = false;
    std::vector<std::string> failures;
    /// The tree in the form of `treeText`; "none" where there is none.
    std::string tree;
};

/// The tree that a text stands for, or why it stands for none.
PlainTree treePlainly(std::string_view text);

/// A tree with all that its getters tell: integers of 64 bits, and the length and bytes of each string. It
/// recurses, so it is for small trees.
std::string treeText(qvjson::Item * item);

} // namespace jsontest
