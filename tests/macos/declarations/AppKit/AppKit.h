#pragma once

#include <Foundation/Foundation.h>

#include "NSPanel.h"
#include "NSView.h"
#include "Shell.h"
