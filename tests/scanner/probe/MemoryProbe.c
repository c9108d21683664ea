/* A library with nothing in it but one function: the memory scan's test loads a
   marked copy of it into a running program. */
int vmk_memory_probe(void)
{
    return 1;
}
