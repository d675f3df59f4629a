#include "standin/desktop/Query.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace standin {

namespace {

// Groups inside groups beyond this depth are read as if their parentheses were not there, so that no pasted
// text can exhaust the stack.
constexpr int deepestGroup = 50;

bool IsBlank(wchar_t character) noexcept
{
    return character == L' ' || character == L'\t' || character == L'\r' || character == L'\n' ||
           character == 0x3000;
}

bool EndsWord(wchar_t character) noexcept
{
    return IsBlank(character) || character == L'"' || character == L'(' || character == L')';
}

} // namespace

class Query::Parser
{
public:
    explicit Parser(std::wstring_view text) : m_text(text) { Advance(); }

    std::vector<Alternatives> ParseGroup(int depth)
    {
        std::vector<Alternatives> all;
        bool joins = false;
        while (m_kind != Kind::End) {
            if (m_kind == Kind::Close) {
                Advance();
                if (depth > 0) {
                    break;
                }
                continue;
            }
            if (m_kind == Kind::Word && m_token == L"OR" && !all.empty() && !joins && NextStartsTerm()) {
                Advance();
                joins = true;
                continue;
            }
            Term term;
            if (ParseTerm(depth, term)) {
                if (joins) {
                    all.back().push_back(std::move(term));
                } else {
                    all.push_back({std::move(term)});
                }
            }
            joins = false;
        }
        return all;
    }

private:
    enum class Kind
    {
        Word,
        Phrase,
        Open,
        Close,
        End
    };

    // False for what asks for nothing: an empty phrase, an empty group.
    bool ParseTerm(int depth, Term& term)
    {
        if (m_kind == Kind::Word && m_token == L"NOT" && NextStartsTerm()) {
            term.excluded = true;
            Advance();
        }
        if (m_kind == Kind::Open) {
            Advance();
            if (depth >= deepestGroup) {
                return false;
            }
            term.all = ParseGroup(depth + 1);
            return !term.all.empty();
        }
        term.text = m_token;
        Advance();
        return !term.text.empty();
    }

    bool NextStartsTerm() const
    {
        const size_t next = SkipBlanks(m_position);
        return next < m_text.size() && m_text[next] != L')';
    }

    size_t SkipBlanks(size_t position) const
    {
        while (position < m_text.size() && IsBlank(m_text[position])) {
            ++position;
        }
        return position;
    }

    void Advance()
    {
        m_position = SkipBlanks(m_position);
        m_token = {};
        if (m_position == m_text.size()) {
            m_kind = Kind::End;
            return;
        }
        const wchar_t first = m_text[m_position];
        if (first == L'(' || first == L')') {
            m_kind = first == L'(' ? Kind::Open : Kind::Close;
            ++m_position;
        } else if (first == L'"') {
            m_kind = Kind::Phrase;
            const size_t start = m_position + 1;
            const size_t end = std::min(m_text.find(L'"', start), m_text.size());
            m_token = m_text.substr(start, end - start);
            m_position = std::min(end + 1, m_text.size());
        } else {
            m_kind = Kind::Word;
            const size_t start = m_position;
            while (m_position < m_text.size() && !EndsWord(m_text[m_position])) {
                ++m_position;
            }
            m_token = m_text.substr(start, m_position - start);
        }
    }

    std::wstring_view m_text;
    size_t m_position = 0;
    Kind m_kind = Kind::End;
    std::wstring_view m_token;
};

Query::Query(std::wstring_view text) : m_all(Parser(text).ParseGroup(0)) {}

bool Query::Hits(std::wstring_view name) const
{
    return !IsEmpty() && HitsAll(m_all, name);
}

bool Query::HitsAll(const std::vector<Alternatives>& all, std::wstring_view name)
{
    return std::all_of(all.begin(), all.end(), [name](const Alternatives& alternatives) {
        return std::any_of(alternatives.begin(), alternatives.end(),
                           [name](const Term& term) { return HitsTerm(term, name); });
    });
}

bool Query::HitsTerm(const Term& term, std::wstring_view name)
{
    const bool hits = term.all.empty() ? ContainsName(name, term.text) : HitsAll(term.all, name);
    return hits != term.excluded;
}

int CompareNames(std::wstring_view left, std::wstring_view right) noexcept
{
    return CompareStringOrdinal(left.data(), static_cast<int>(left.size()), right.data(),
                                static_cast<int>(right.size()), TRUE) -
           CSTR_EQUAL;
}

bool ContainsName(std::wstring_view name, std::wstring_view part) noexcept
{
    for (size_t start = 0; start + part.size() <= name.size(); ++start) {
        if (CompareNames(name.substr(start, part.size()), part) == 0) {
            return true;
        }
    }
    return false;
}

} // namespace standin
