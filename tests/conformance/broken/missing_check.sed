# Breaks container_search.cpp: a list that could not be made is used.
s/if (!set) return false;/if (!may_share) return false;/
