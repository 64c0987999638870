// The resource ids of the dialog and its controls, as macros because the resource compiler supports nothing else.
#pragma once

#define DIALOG_PROGRESS 10
#define DIALOG_TEXT 11
#define DIALOG_BAR 12
