#pragma once

// Mistakes that only a header can make; see Mistakes.cpp.

int definedInAHeader = 0;  // misc-definitions-in-headers
