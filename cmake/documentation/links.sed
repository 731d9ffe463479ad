# Changes a link to a file that is no page, such as ../samples/cpp/main.cpp, into a link to its copy in the site.
s#](\([a-z.-]*/\)*\([A-Za-z.-]*\.\(cfg\|cpp\|svg\|txt\)\))#](\2)#g
