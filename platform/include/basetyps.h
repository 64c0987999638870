// Macros to declare and define COM methods.
#pragma once

#include <minwindef.h>

