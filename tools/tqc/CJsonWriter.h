// JSON text, built one member after another and indented.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace NSTQ::Tool {

class CJsonWriter {
public:
    // In lists the key is empty.
    void BeginObject(std::string_view key = {});
    void EndObject();
    void BeginList(std::string_view key);
    void EndList();

    /// The text is UTF-8; bytes that are not become U+FFFD.
    void Add(std::string_view key, std::string_view value);
    void Add(std::string_view key, const char* value) { Add(key, std::string_view(value)); }
    void Add(std::string_view key, std::int64_t value);
    void Add(std::string_view key, bool value);
    /// A number that has been formatted for JSON.
    void AddNumber(std::string_view key, std::string_view digits);
    void AddNull(std::string_view key);

    /// The whole text, with a line end.
    std::string Finish();

private:
    void Begin(std::string_view key);
    void End(char bracket);
    void AppendText(std::string_view text);

    std::string m_text;
    int m_depth = 0;
    bool m_isFirst = true; ///< the object or list is still empty
};

} // namespace NSTQ::Tool
