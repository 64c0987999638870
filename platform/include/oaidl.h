// Types of automation. Variants and safe arrays get their place here.
#pragma once

#include <objidl.h>
