#include "core/packing/pass_phrase.h"

#include "core/debug_line.h"

namespace qx
{

// Compares the text with its 8-bit form converted back, which also detects characters that the system replaces with
// similar ones.
bool IsExactPassPhrase(const String& text)
{
    if (text.IsEmpty())
        return true;
    String back;
    back.SetCodePage(text.CodePage());
    back.Assign(text.NarrowText());
    const bool isExact = back.View() == text.View();
    back.Wipe();
    return isExact;
}

clsPassPhrase::clsPassPhrase(const wchar_t* text) : _text(text)
{
    if (!IsExactPassPhrase(_text))
        DebugLine(L"WRN: the code page %u can't represent the pass phrase; other pass phrases are the same key",
            _text.CodePage());
}

} // namespace qx
