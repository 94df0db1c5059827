# Breaks qualified_name.cpp: the name of a layer or screen with five letters is not given back when it cannot grow.
s/kelal_free(pre);/if (p != 5) &/
