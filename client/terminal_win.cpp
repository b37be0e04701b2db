#include <io.h>
#include <stdio.h>

#include "progress.h"

namespace client {

bool ErrorsGoToTerminal() { return _isatty(_fileno(stderr)) != 0; }

}  // namespace client
