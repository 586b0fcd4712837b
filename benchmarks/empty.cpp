// The library that the module is loaded beside: nothing in it, the same libraries needed.
