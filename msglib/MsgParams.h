// MsgParams.h - structured MIME field values: "value; name=value; ...".
//
// Used for Content-Type and Content-Disposition. Comments are skipped,
// quoted strings unquoted, RFC 2231 parameters ("name*", "name*0*", ...)
// joined and decoded.
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

    // A parameter as text: the RFC 2231 forms first, else the plain value,
    // in which RFC 2047 words are decoded (mailers put them there).
    bool GetText(std::string_view name, std::u16string* text) const;

private:
    struct Param {
        std::string name;  // lower case
        std::string value;
    };
    std::string m_value;
    std::vector<Param> m_params;
};

}  // namespace msg

#endif  // QV_MSGLIB_MSGPARAMS_H
