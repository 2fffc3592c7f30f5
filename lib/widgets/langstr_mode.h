// How the multilingual text widgets lay out a text. The constructors take
// the mode as an int, so 0 and 1 still mean these.
#pragma once

enum OvLangstrMode : int {
    // Entries: one-line fields. Display: every translation under its
    // language name.
    OV_LANGSTR_MODE_SINGLE_LINE = 0,
    // Entries: text views that wrap. Display: the text in the active locale
    // with a status icon.
    OV_LANGSTR_MODE_MULTI_LINE = 1,
};
