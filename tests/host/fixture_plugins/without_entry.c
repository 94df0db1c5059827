/* without_entry.c: a shared object that is no plug-in. */
int some_other_function(void);

int some_other_function(void) { return 0; }
