// Results of the network functions.
#pragma once

#define NERR_Success 0
