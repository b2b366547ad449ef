#include "OpenDialogs.h"

#include "moc_OpenDialogs.cpp"
