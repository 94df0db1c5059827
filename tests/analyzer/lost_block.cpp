// lost_block.cpp: loses a block of the host's heap on one way out, and has to be found by the analyser.
int first_letter(const char *text);

int first_letter(const char *text) {
    char *copy = kelal_strdup(text);
    if (!copy) return -1;
    if (*copy == '\0') return 0;
    const int letter = *copy;
    kelal_free(copy);
    return letter;
}
