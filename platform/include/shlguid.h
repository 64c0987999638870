// The classes of the shell.
#pragma once

#include <shobjidl.h>
