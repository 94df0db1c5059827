# Breaks container_search.cpp: a set that was cut short is filled and searched, which has no end when it is full.
s/if (kl_darray_size(list) != slots) return false;/if (!kl_darray_size(list)) return false;/
