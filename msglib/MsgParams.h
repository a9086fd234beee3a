// MsgParams.h - structured MIME field values: "value; name=value; ...".
//
// Used for Content-Type and Content-Disposition. Comments are skipped,
// quoted strings unquoted, RFC 2231 parameters ("name*", "name*0*", ...)
// joined and decoded. The list keeps a copy of the value it parsed, and the
// parameters are places in it, so that a part's parameters cost no string
// each and the value given may go.
#ifndef QV_MSGLIB_MSGPARAMS_H
#define QV_MSGLIB_MSGPARAMS_H

#include <string>
#include <string_view>
#include <vector>

namespace msg {

class MsgParams {
public:
    // Parses an unfolded field value.
    void Parse(std::string_view value);

    // The part before the first ';', comments removed, trimmed, lower case.
    const std::string& Value() const { return m_value; }

    // A plain parameter's value (quotes removed). Names match in any case.
    bool Get(std::string_view name, std::string* value) const;
    // The same as a view, valid until the next Parse.
    bool Get(std::string_view name, std::string_view* value) const;

    // A parameter as text: the RFC 2231 forms first, else the plain value,
    // in which RFC 2047 words are decoded (mailers put them there).
    bool GetText(std::string_view name, std::u16string* text) const;

private:
    // Where a name and its value are in m_text: a quoted value with
    // backslashes is unquoted into m_text after the value parsed.
    struct Param {
        size_t nameBegin, nameSize;
        size_t valueBegin, valueSize;
    };
    std::string_view Name(const Param& p) const { return std::string_view(m_text).substr(p.nameBegin, p.nameSize); }
    std::string_view Value(const Param& p) const {
        return std::string_view(m_text).substr(p.valueBegin, p.valueSize);
    }
    // The value of the quoted string whose opening quote is before m_text[p],
    // in the first n bytes of m_text; where the string ends.
    size_t Quoted(size_t p, size_t n, Param* param);

    std::string m_text;
    std::string m_value;
    std::vector<Param> m_params;
};

}  // namespace msg

#endif  // QV_MSGLIB_MSGPARAMS_H
