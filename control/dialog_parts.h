// The numbers of the dialog and its parts, as macros because the resource compiler supports nothing else.
#pragma once

#define DIALOG_PROGRESS 10
#define DIALOG_TEXT 11
#define DIALOG_BAR 12
