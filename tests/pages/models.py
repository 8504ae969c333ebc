"""Models that the tests make pages of."""

HEAD = """ISO-10303-21;
HEADER;
FILE_DESCRIPTION(('%s'),'2;1');
FILE_NAME('%s','2026-01-02T03:04:05',('A. Author'),('%s'),'','','');
FILE_SCHEMA(('IFC4X3_ADD2'));
ENDSEC;
DATA;
"""
FOOT = "ENDSEC;\nEND-ISO-10303-21;\n"

# What would run, or end the element that it stands in, if it were taken for markup.
HOSTILE = ("</script><script>window.hit=1;alert(1)</script>", "<img src=x onerror=window.hit=2>",
           "\"><svg onload=window.hit=3>", "javascript:window.hit=4", "${window.hit=5}", "@DATA@ <!-- ]]>",
           "__proto__", "constructor")

_DIGITS = "0123456789ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz_$"


def global_id(number):
    """Twenty-two digits that have nothing in common with those of the neighbours, as in real files."""
    value = (number * 0x9E3779B97F4A7C15F39CC0605CEDC834 + 0x1234567) % (1 << 128)
    text = ""
    for _ in range(22):
        value, digit = divmod(value, 64)
        text = _DIGITS[digit] + text
    return text


class Writer:
    def __init__(self):
        self.lines = []

    def add(self, text):
        self.lines.append(f"#{len(self.lines) + 1}={text};\n")
        return f"#{len(self.lines)}"

    def rooted(self, entity, text):
        return self.add(f"{entity}('{global_id(len(self.lines))}',$,{text})")

    def text(self, title):
        return HEAD % (title, title, title) + "".join(self.lines) + FOOT

    def structure(self, name, storeys):
        """Project, building and storeys; returns the storeys."""
        length = self.add("IFCSIUNIT(*,.LENGTHUNIT.,.MILLI.,.METRE.)")
        area = self.add("IFCSIUNIT(*,.AREAUNIT.,$,.SQUARE_METRE.)")
        units = self.add(f"IFCUNITASSIGNMENT(({length},{area}))")
        project = self.rooted("IFCPROJECT", f"'{name}',$,$,$,$,$,{units}")
        building = self.rooted("IFCBUILDING", f"'{name}',$,$,$,$,$,.ELEMENT.,$,$,$")
        made = [self.rooted("IFCBUILDINGSTOREY", f"'Storey {i + 1}',$,$,$,$,$,.ELEMENT.,{i * 3000}.")
                for i in range(storeys)]
        self.rooted("IFCRELAGGREGATES", f"$,$,{project},({building})")
        self.rooted("IFCRELAGGREGATES", f"$,$,{building},({','.join(made)})")
        return made


def hostile():
    """A model in which every text is an attack."""
    writer = Writer()
    storey = writer.structure(HOSTILE[0], 1)[0]
    walls = [writer.rooted("IFCWALL", f"'{text}','{text}','{text}',$,$,'{text}',.SOLIDWALL.") for text in HOSTILE]
    writer.rooted("IFCRELCONTAINEDINSPATIALSTRUCTURE", f"$,$,({','.join(walls)}),{storey}")
    for text in HOSTILE:
        value = writer.add(f"IFCPROPERTYSINGLEVALUE('{text}',$,IFCLABEL('{text}'),$)")
        pset = writer.rooted("IFCPROPERTYSET", f"'{text}',$,({value})")
        writer.rooted("IFCRELDEFINESBYPROPERTIES", f"$,$,({walls[0]},{walls[1]}),{pset}")
        material = writer.add(f"IFCMATERIAL('{text}',$,$)")
        writer.rooted("IFCRELASSOCIATESMATERIAL", f"$,$,({walls[2]}),{material}")
        system = writer.add(f"IFCCLASSIFICATION($,$,$,'{text}',$,$,$)")
        reference = writer.add(f"IFCCLASSIFICATIONREFERENCE($,'{text}','{text}',{system},$,$)")
        writer.rooted("IFCRELASSOCIATESCLASSIFICATION", f"$,$,({walls[3]}),{reference}")
    length = writer.add("IFCQUANTITYLENGTH('Length',$,$,2500.,$)")
    quantities = writer.rooted("IFCELEMENTQUANTITY", f"'Qto_WallBaseQuantities',$,$,({length})")
    writer.rooted("IFCRELDEFINESBYPROPERTIES", f"$,$,({walls[0]},{walls[1]}),{quantities}")
    writer.add(f"IFC{'X' * 3}('{HOSTILE[1]}')")
    writer.rooted("IFCWALL", f"'no literal',$,$,$,$,$,.{'HOSTILE'}.")
    writer.add(f"IFCCARTESIANPOINT('{HOSTILE[1]}')")
    return writer.text(HOSTILE[0])


def grown(objects, types=200):
    """A model of so many objects and types, with sets of their own for one in ten and shared ones for the others."""
    writer = Writer()
    storeys = writer.structure("Grown", 40)
    in_storey = [[] for _ in storeys]
    made = []
    for i in range(objects - types - len(storeys)):
        entity = ("IFCWALL", "IFCDOOR", "IFCSLAB", "IFCPIPESEGMENT")[i % 4]
        rest = {"IFCWALL": ",.SOLIDWALL.", "IFCDOOR": ",2100.,900.,.DOOR.,$,$", "IFCSLAB": ",.FLOOR.",
                "IFCPIPESEGMENT": ",.RIGIDSEGMENT."}[entity]
        made.append(writer.rooted(entity, f"'Element {i}',$,'Kind {i % 97}',$,$,'tag-{i * 7919}'{rest}"))
        in_storey[i % len(storeys)].append(made[-1])
    for storey, elements in zip(storeys, in_storey):
        writer.rooted("IFCRELCONTAINEDINSPATIALSTRUCTURE", f"$,$,({','.join(elements)}),{storey}")
    for i in range(types):
        of_type = writer.rooted("IFCWALLTYPE", f"'Type {i}',$,$,$,$,$,$,.SOLIDWALL.")
        writer.rooted("IFCRELDEFINESBYTYPE", f"$,$,({','.join(made[i * 4:len(made):types * 4])}),{of_type}")
    for i in range(0, len(made), 10):
        for owners, own in (((made[i],), True), (made[i:i + 10], False)):
            values = [writer.add(f"IFCPROPERTYSINGLEVALUE('Property {k}',$,IFCREAL({i * 17 % 9973 + k}.25),$)")
                      for k in range(10)]
            pset = writer.rooted("IFCPROPERTYSET", f"'{'Own' if own else 'Pset_Shared'}',$,({','.join(values)})")
            writer.rooted("IFCRELDEFINESBYPROPERTIES", f"$,$,({','.join(owners)}),{pset}")
        area = writer.add(f"IFCQUANTITYAREA('NetArea',$,$,{i % 50 + 1}.5,$)")
        quantities = writer.rooted("IFCELEMENTQUANTITY", f"'Qto_Base',$,$,({area})")
        writer.rooted("IFCRELDEFINESBYPROPERTIES", f"$,$,({','.join(made[i:i + 10])}),{quantities}")
    return writer.text("grown")
