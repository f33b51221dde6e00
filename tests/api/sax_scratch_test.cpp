#include <gtest/gtest.h>
#include <iostream>
#include "host_test.h"
#include "sax_host.h"
using namespace lumtest;
void show(HostRecord& r, size_t max = 40) { DrainOptions o; o.maxEvents = max; auto v = drain(r, o); for (auto& s : v) std::cout << s.substr(0, 300) << "\n"; std::cout << "---- " << v.size() << "\n"; }
TEST(Scratch, Print) {
    initLibraryOnce();
    lumtest::TempDir dir;
    { HostRecord r; r.setFile(dir.file("missing.xml")); show(r); }
    { HostRecord r; r.setFile("//tmp/x/missing.xml"); show(r); }
    { HostRecord r; r.setFile(dir.path() + "/" + std::string(300, 'n') + ".xml"); show(r); }
    { HostRecord r; r.setMemory("<!DOCTYPE r [<!ELEMENT r EMPTY><!ATTLIST r a CDATA #IMPLIED><!ATTLIST r a CDATA #IMPLIED><!ENTITY e 'x'><!ENTITY e 'y'>]><r/>"); r.setFlags(2); show(r); }
    { HostRecord r; r.setMemory("<!DOCTYPE r [<!ELEMENT r (a)><!ELEMENT a EMPTY>]><r><b/><c/></r>"); r.setFlags(2); show(r); }
    std::string bl = "<?xml version='1.0'?><!DOCTYPE lolz [<!ENTITY lol 'lol'>";
    for (int i = 1; i <= 9; ++i) { bl += "<!ENTITY lol" + std::to_string(i) + " '"; for (int j=0;j<10;++j) bl += "&lol" + (i==1?std::string(""):std::to_string(i-1)) + ";"; bl += "'>"; }
    bl += "]><lolz>&lol9;</lolz>";
    { HostRecord r; r.setMemory(bl); r.setLimit(50000); DrainOptions o; o.withLocation=false; o.maxEvents=200000; auto v = drain(r,o); std::cout << "BL events " << v.size() << " last: " << v[v.size()-2].substr(0,200) << " / " << v.back() << "\n"; }
    std::string q = "<!DOCTYPE r [<!ENTITY a '" + std::string(1000,'x') + "'>]><r>";
    for (int i=0;i<60000;++i) q += "&a;";
    q += "</r>";
    { HostRecord r; r.setMemory(q); r.setLimit(50000); DrainOptions o; o.withLocation=false; o.maxEvents=200000; auto v = drain(r,o); std::cout << "Q events " << v.size() << " last: " << v[v.size()-2].substr(0,200) << " / " << v.back() << "\n"; }
    { HostRecord r; r.setMemory(q); r.setLimit(1000); DrainOptions o; o.withLocation=false; o.maxEvents=200000; auto v = drain(r,o); std::cout << "Q1000 events " << v.size() << " last: " << v[v.size()-2].substr(0,200) << " / " << v.back() << "\n"; }
}
