#include "source/utility/Errors.h"
