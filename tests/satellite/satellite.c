/* A library of resources: an sRGB profile where the Lab profile belongs, and something that is no profile. */
int NothingButResources(void);
int NothingButResources(void) { return 0; }
