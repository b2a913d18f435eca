/* Stand-in for the generated indication header, which declares nothing gen_objdict.c needs here. */
