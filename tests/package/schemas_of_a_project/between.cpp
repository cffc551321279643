// A library in front of the schema libraries, which uses none of their symbols either.
int between() { return 0; }
