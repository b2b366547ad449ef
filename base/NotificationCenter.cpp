#include "NotificationCenter.h"

#include "moc_NotificationCenter.cpp"
