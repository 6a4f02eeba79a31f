#include "host/AutomationCurve.h"
