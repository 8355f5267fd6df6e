#include <CLI/CLI.hpp>

#include "app/console/Terminal.h"
