#include <unistd.h>

#include "progress.h"

namespace client {

bool ErrorsGoToTerminal() { return isatty(STDERR_FILENO) != 0; }

}  // namespace client
