#pragma once

namespace ringwell::text {

// The value of a hexadecimal digit (either case), or -1 for any other character.
int hexDigitValue(char c);

} // namespace ringwell::text
