#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace standin {

// A search text, parsed once and then asked for each application name. Pure: no state outside the object, any
// thread.
//
//   "Mail Box"        a phrase: hits a name that contains it
//   Mail              a word: the same; all words and phrases must hit
//   A OR B            one of the two is enough; binds tighter than standing side by side
//   NOT(…)  NOT A     hits a name that what follows does not hit
//   (…)               a group
//
// OR and NOT count only in capitals and only where they have something to work on; anywhere else they are
// words. Letters are compared without regard to case. A missing quote or parenthesis counts as standing at
// the end, one too many is passed over.
class Query
{
public:
    explicit Query(std::wstring_view text);

    // True when the text asks for nothing; such a query hits no name.
    [[nodiscard]] bool IsEmpty() const noexcept { return m_all.empty(); }

    [[nodiscard]] bool Hits(std::wstring_view name) const;

private:
    struct Term;
    using Alternatives = std::vector<Term>;

    struct Term
    {
        std::wstring text;             // a word or phrase; empty for a group
        std::vector<Alternatives> all; // a group's content
        bool excluded = false;
    };

    class Parser;

    static bool HitsAll(const std::vector<Alternatives>& all, std::wstring_view name);
    static bool HitsTerm(const Term& term, std::wstring_view name);

    std::vector<Alternatives> m_all;
};

// Negative, 0 or positive: the order of application names, by code unit without regard to case.
[[nodiscard]] int CompareNames(std::wstring_view left, std::wstring_view right) noexcept;

// True when name contains part, without regard to case. Everything contains the empty part.
[[nodiscard]] bool ContainsName(std::wstring_view name, std::wstring_view part) noexcept;

} // namespace standin
