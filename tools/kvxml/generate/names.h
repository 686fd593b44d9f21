/// Names of C++ for what a schema names. The rules are told in docs/generated-classes.md.
#pragma once

#include <set>
#include <string>
#include <string_view>

namespace tool::generate {

/// "order-date" becomes "OrderDate": letters and digits, each word with a capital; other characters end a
/// word. What would begin with a digit gets a "V" in front; characters beyond ASCII become their number
/// ("U00E9"). Empty when nothing is left.
std::string ToPascal(std::string_view text);
/// As ToPascal for values of enumerations, where signs matter: "+1" becomes "Plus1", "" becomes "Empty".
std::string ToEnumerator(std::string_view text);
/// "OrderDate" becomes "m_orderDate".
std::string ToMemberVariable(std::string_view pascal);
/// Text as a literal of C++, quotes included.
std::string ToLiteral(std::string_view text);

/// Names given in one scope: no two are the same, and none is a word that C++ or the base class has taken.
class CNameScope {
public:
    void Reserve(std::string name) { m_taken.insert(std::move(name)); }
    bool Has(const std::string& name) const { return m_taken.count(name) != 0; }
    /// `wanted`, or with a number (2, 3...) after it when it is taken; taken from then on.
    std::string Take(const std::string& wanted);

private:
    std::set<std::string> m_taken;
};

}  // namespace tool::generate
