# SPDX-License-Identifier: Apache-2.0
"""What is in the example library: three documents with their categories, symbols and shapes.

A text is either a plain string, or a triple (English, German, French); a triple is stored in the message table and the
document refers to it by key. The keys of an entry are made from its `key`: SYM_<key>_NAME, _TITLE and _DESC.

To add an entry: draw it in icons.py or shapes.py, add a row here, run make_example_library.py. Names identify entries;
the generator refuses names that occur twice, in any language and over all three documents.
"""

LANGUAGES = ("en", "de", "fr")


class Keyed:
    """A text with a fixed key, for texts that several entries share."""

    def __init__(self, key, *texts):
        self.key, self.texts = key, texts


NM = Keyed("SYM_UNIT_NM", "Nm", "Nm", "N·m")
MM = Keyed("SYM_UNIT_MM", "mm", "mm", "mm")
TORQUE = Keyed("SYM_TAG_TORQUE", "Tightening torque", "Anzugsdrehmoment", "Couple de serrage")
LENGTH = Keyed("SYM_TAG_LENGTH", "Length", "Länge", "Longueur")
DIAMETER = Keyed("SYM_TAG_DIAMETER", "Diameter", "Durchmesser", "Diamètre")
ACROSS_FLATS = Keyed("SYM_TAG_ACROSS_FLATS", "Width across flats", "Schlüsselweite", "Cote sur plats")
KIND = Keyed("SYM_TAG_KIND", "Kind", "Art", "Type")


def tag(kind, description, quantity, unit=""):
    return {"type": kind, "description": description, "quantity": quantity, "unit": unit}


def image(key, category, name, title, description, **more):
    """A flat symbol. Pictures are SVG unless `png` is set; `picture` names another drawing than the key's own."""
    return {"key": key, "category": category, "name": name, "title": title, "description": description, **more}


def shape(key, category, name, title, description, mesh, **more):
    return {"key": key, "category": category, "name": name, "title": title, "description": description, "mesh": mesh,
            **more}


# Where the thumbnails and the preview cameras look from: azimuth, elevation and roll in degrees.
VIEWS = {
    "arrow": (-62, 30, 0), "double_arrow": (-66, 28, 0), "curved_arrow": (-70, 48, 0), "wrench": (-80, 58, 32),
    "bolt": (-55, 26, -28), "hex_nut": (-62, 38, 0), "oil_drop": (-55, 12, 0), "cone_marker": (-55, 14, 0),
    "ring_marker": (-55, 42, 0), "gripper": (-28, 18, 0), "screwdriver": (-62, 18, 36), "washer": (-55, 40, 0),
    "hook": (-68, 14, 0),
}

# The shapes that are stored as binary glTF; all others are OBJ.
GLB = {"oil_drop", "cone_marker", "hook"}


# ------------------------------------------------------------------------------------------------- delivered library

STANDARD = {
    "path": "SymbolsLibrary/standard/PartSymbolLibrary.xml",
    "folder": "SymbolsLibrary/standard",
    "units": "mm",
    "information": "Delivered symbols for service and assembly instructions",
    "categories": [
        ("cat-std-directions", ("SYM_CAT_DIRECTIONS", ("Directions", "Richtungen", "Directions")),
         "Arrows that show where a part goes", "Straight, bent and double arrows for moving, inserting and removing."),
        ("cat-std-rotation", ("SYM_CAT_ROTATION", ("Rotation", "Drehung", "Rotation")),
         "Arrows that show which way to turn", "Clockwise, counter-clockwise, quarter turn and half turn."),
        ("cat-std-force", ("SYM_CAT_FORCE", ("Force", "Kraft", "Force")), "Push, pull and clamp", ""),
        ("cat-std-steps", ("SYM_CAT_STEPS", ("Step numbers", "Schrittnummern", "Numéros d'étape")),
         "Numbers of work steps", "Digits 1 to 9 in a disc."),
        ("cat-std-warning", ("SYM_CAT_WARNING", ("Warning", "Warnung", "Avertissement")),
         "Warning signs", "Yellow triangle: there is a danger."),
        ("cat-std-mandatory", ("SYM_CAT_MANDATORY", ("Mandatory", "Gebot", "Obligation")),
         "Mandatory signs", "Blue disc: this must be done or worn."),
        ("cat-std-prohibition", ("SYM_CAT_PROHIBITION", ("Prohibition", "Verbot", "Interdiction")),
         "Prohibition signs", "Red ring with bar: this must not be done."),
        ("cat-std-tools", ("SYM_CAT_TOOLS", ("Tools", "Werkzeuge", "Outils")), "Hand tools", ""),
        ("cat-std-consumables", ("SYM_CAT_CONSUMABLES", ("Consumables", "Betriebsstoffe", "Consommables")),
         "Oil, grease & other fluids", "What is used up during the work."),
        ("cat-std-checks", ("SYM_CAT_CHECKS", ("Checks", "Prüfungen", "Contrôles")), "Look, inspect, measure", ""),
        ("cat-std-shapes", ("SYM_CAT_SHAPES", ("3D symbols", "3D-Symbole", "Symboles 3D")),
         "Small shapes that stand beside the parts", "Arrows, markers, tools and fasteners in three dimensions."),
    ],
    "images": [
        # Directions
        image("ARROW_STRAIGHT", "cat-std-directions",
              ("Straight arrow", "Gerader Pfeil", "Flèche droite"),
              ("Move to the right", "Nach rechts bewegen", "Déplacer vers la droite"),
              ("Shows a straight movement.", "Zeigt eine gerade Bewegung.", "Indique un mouvement rectiligne."),
              svg_thumbnails=True, show_description=True),
        image("ARROW_DOWN", "cat-std-directions",
              ("Straight arrow, down", "Gerader Pfeil, abwärts", "Flèche droite, vers le bas"),
              ("Move down", "Nach unten bewegen", "Déplacer vers le bas"),
              ("The straight arrow, turned by 90 degrees.", "Der gerade Pfeil, um 90 Grad gedreht.",
               "La flèche droite, tournée de 90 degrés."),
              picture="arrow_straight", rotate=(90, 0)),
        image("ARROW_BENT", "cat-std-directions",
              ("Bent arrow", "Abgewinkelter Pfeil", "Flèche coudée"),
              ("Move round the corner, to the right", "Um die Ecke nach rechts bewegen",
               "Contourner l'angle vers la droite"),
              ("Shows a movement with a bend to the right.", "Zeigt eine Bewegung mit einem Knick nach rechts.",
               "Indique un mouvement coudé vers la droite."),
              svg_thumbnails=True),
        image("ARROW_BENT_LEFT", "cat-std-directions",
              ("Bent arrow, to the left", "Abgewinkelter Pfeil, nach links", "Flèche coudée, vers la gauche"),
              ("Move round the corner, to the left", "Um die Ecke nach links bewegen",
               "Contourner l'angle vers la gauche"),
              ("The bent arrow, flipped.", "Der abgewinkelte Pfeil, gespiegelt.", "La flèche coudée, inversée."),
              picture="arrow_bent", flip=(True, False)),
        image("ARROW_DOUBLE", "cat-std-directions",
              ("Double arrow", "Doppelpfeil", "Flèche double"),
              ("Move to and fro", "Hin und her bewegen", "Déplacer dans les deux sens"),
              ("Shows a movement in both directions.", "Zeigt eine Bewegung in beide Richtungen.",
               "Indique un mouvement dans les deux sens."),
              svg_thumbnails=True),
        image("ARROW_UTURN", "cat-std-directions",
              ("U-turn arrow", "Umkehrpfeil", "Flèche de retour"),
              ("Turn round", "Umkehren", "Faire demi-tour"),
              ("Shows that a part is led around and back.", "Zeigt, dass ein Teil herum und zurück geführt wird.",
               "Indique qu'une pièce est contournée puis ramenée."),
              svg_thumbnails=True),
        image("ARROW_INSERT", "cat-std-directions",
              ("Insert", "Einsetzen", "Insérer"),
              ("Insert the part", "Teil einsetzen", "Insérer la pièce"),
              ("Put the part into its seat.", "Das Teil in seinen Sitz einsetzen.",
               "Mettre la pièce dans son logement.")),
        image("ARROW_REMOVE", "cat-std-directions",
              ("Remove", "Herausnehmen", "Retirer"),
              ("Remove the part", "Teil herausnehmen", "Retirer la pièce"),
              ("Take the part out of its seat.", "Das Teil aus seinem Sitz nehmen.",
               "Sortir la pièce de son logement.")),
        # Rotation
        image("ROTATE_CW", "cat-std-rotation",
              ("Turn clockwise", "Rechtsdrehung", "Rotation horaire"),
              ("Turn to the right", "Nach rechts drehen", "Tourner à droite"),
              ("Turn clockwise, for example to tighten.", "Im Uhrzeigersinn drehen, zum Beispiel zum Anziehen.",
               "Tourner dans le sens horaire, par exemple pour serrer."),
              svg_thumbnails=True, show_description=True),
        image("ROTATE_CCW", "cat-std-rotation",
              ("Turn counter-clockwise", "Linksdrehung", "Rotation antihoraire"),
              ("Turn to the left", "Nach links drehen", "Tourner à gauche"),
              ("Turn counter-clockwise, for example to loosen.",
               "Gegen den Uhrzeigersinn drehen, zum Beispiel zum Lösen.",
               "Tourner dans le sens antihoraire, par exemple pour desserrer."),
              svg_thumbnails=True, show_description=True),
        image("ROTATE_90", "cat-std-rotation",
              ("Quarter turn", "Vierteldrehung", "Quart de tour"),
              ("Turn by 90 degrees", "Um 90 Grad drehen", "Tourner de 90 degrés"),
              ("Turn the part by a quarter turn.", "Das Teil um eine Vierteldrehung drehen.",
               "Tourner la pièce d'un quart de tour."),
              tags=[tag("TYPE", KIND, "90", "°")]),
        image("ROTATE_180", "cat-std-rotation",
              ("Half turn", "Halbe Drehung", "Demi-tour"),
              ("Turn by 180 degrees", "Um 180 Grad drehen", "Tourner de 180 degrés"),
              ("Turn the part over or around.", "Das Teil wenden oder umdrehen.", "Retourner la pièce."),
              tags=[tag("TYPE", KIND, "180", "°")]),
        # Force
        image("FORCE_PUSH", "cat-std-force",
              ("Push", "Drücken", "Pousser"),
              ("Push against the stop", "Gegen den Anschlag drücken", "Pousser contre la butée"),
              ("Push the part until it rests.", "Das Teil drücken, bis es anliegt.",
               "Pousser la pièce jusqu'en appui.")),
        image("FORCE_PULL", "cat-std-force",
              ("Pull", "Ziehen", "Tirer"),
              ("Pull off", "Abziehen", "Extraire en tirant"),
              ("Pull the part away from its seat.", "Das Teil von seinem Sitz abziehen.",
               "Écarter la pièce de son siège en tirant.")),
        image("FORCE_CLAMP", "cat-std-force",
              ("Clamp", "Klemmen", "Brider"),
              ("Press together", "Zusammendrücken", "Serrer des deux côtés"),
              ("Hold or press the part from both sides.", "Das Teil von beiden Seiten halten oder drücken.",
               "Maintenir ou presser la pièce des deux côtés.")),
        # Step numbers 1 to 9 are added below.
        # Warning
        image("WARNING_GENERAL", "cat-std-warning",
              ("General warning", "Allgemeine Warnung", "Avertissement général"),
              ("Caution", "Achtung", "Attention"),
              ("Read the safety notes first.", "Zuerst die Sicherheitshinweise lesen.",
               "Lire d'abord les consignes de sécurité."), billboard=True, show_description=True),
        image("WARNING_HOT", "cat-std-warning",
              ("Hot surface", "Heiße Oberfläche", "Surface chaude"),
              ("Caution, hot", "Vorsicht, heiß", "Attention, chaud"),
              ("Let the parts cool down before you touch them.", "Teile vor dem Berühren abkühlen lassen.",
               "Laisser refroidir les pièces avant de les toucher."), billboard=True, show_description=True),
        image("WARNING_VOLTAGE", "cat-std-warning",
              ("Electrical voltage", "Elektrische Spannung", "Tension électrique"),
              ("Caution, voltage", "Vorsicht, Spannung", "Attention, tension"),
              ("Switch off and secure before you open the cover.", "Vor dem Öffnen abschalten und sichern.",
               "Couper et consigner avant d'ouvrir le capot."), billboard=True, show_description=True),
        image("WARNING_GEARS", "cat-std-warning",
              ("Moving machine parts", "Bewegte Maschinenteile", "Organes en mouvement"),
              ("Caution, rotating parts", "Vorsicht, drehende Teile", "Attention, pièces en rotation"),
              ("Keep hands and clothes away.", "Hände und Kleidung fernhalten.",
               "Tenir mains et vêtements à distance."), show_description=True),
        image("WARNING_FIRE", "cat-std-warning",
              ("Flammable substance", "Feuergefährlicher Stoff", "Matière inflammable"),
              ("Caution, flammable", "Vorsicht, brennbar", "Attention, inflammable"),
              ("Keep away from sparks and heat.", "Von Funken und Hitze fernhalten.",
               "Tenir loin des étincelles et de la chaleur."), show_description=True),
        # Mandatory
        image("MANDATORY_GLOVES", "cat-std-mandatory",
              ("Wear gloves", "Handschuhe tragen", "Porter des gants"),
              ("Hand protection", "Handschutz", "Protection des mains"),
              ("Protective gloves are required.", "Schutzhandschuhe sind Pflicht.",
               "Les gants de protection sont obligatoires."), billboard=True),
        image("MANDATORY_GOGGLES", "cat-std-mandatory",
              ("Wear goggles", "Schutzbrille tragen", "Porter des lunettes"),
              ("Eye protection", "Augenschutz", "Protection des yeux"),
              ("Safety goggles are required.", "Eine Schutzbrille ist Pflicht.",
               "Les lunettes de protection sont obligatoires."), billboard=True),
        image("MANDATORY_EARS", "cat-std-mandatory",
              ("Wear ear protection", "Gehörschutz tragen", "Porter un casque antibruit"),
              ("Ear protection", "Gehörschutz", "Protection de l'ouïe"),
              ("Ear protection is required while the machine runs.", "Bei laufender Maschine ist Gehörschutz Pflicht.",
               "Protection auditive obligatoire lorsque la machine tourne.")),
        image("MANDATORY_MANUAL", "cat-std-mandatory",
              ("Read the manual", "Anleitung lesen", "Lire la notice"),
              ("See the instructions", "Siehe Anleitung", "Voir la notice"),
              ("Read the instructions before this step.", "Vor diesem Schritt die Anleitung lesen.",
               "Lire la notice avant cette étape."), png=True),
        # Prohibition
        image("PROHIBITION_FIRE", "cat-std-prohibition",
              ("No open flame", "Keine offene Flamme", "Flamme nue interdite"),
              ("No fire", "Kein Feuer", "Pas de feu"),
              ("No open flame, no sparks, no smoking.", "Keine offene Flamme, keine Funken, nicht rauchen.",
               "Ni flamme nue, ni étincelle, ne pas fumer.")),
        image("PROHIBITION_TOUCH", "cat-std-prohibition",
              ("Do not touch", "Nicht berühren", "Ne pas toucher"),
              ("Keep hands off", "Hände weg", "Bas les mains"),
              ("Do not touch this surface.", "Diese Fläche nicht berühren.", "Ne pas toucher cette surface.")),
        image("PROHIBITION_LIFT", "cat-std-prohibition",
              ("Do not lift here", "Hier nicht anheben", "Ne pas lever ici"),
              ("No lifting point", "Kein Anschlagpunkt", "Pas un point de levage"),
              ("Do not attach a sling or hook here.", "Hier kein Seil und keinen Haken anschlagen.",
               "Ne fixer ici ni élingue ni crochet.")),
        image("PROHIBITION_TURN", "cat-std-prohibition",
              ("Do not turn", "Nicht drehen", "Ne pas tourner"),
              ("Keep the position", "Stellung beibehalten", "Garder la position"),
              ("The part must not be turned in this step.", "Das Teil darf in diesem Schritt nicht gedreht werden.",
               "La pièce ne doit pas être tournée pendant cette étape.")),
        # Tools
        image("TOOL_TORQUE_WRENCH", "cat-std-tools",
              ("Torque wrench", "Drehmomentschlüssel", "Clé dynamométrique"),
              ("Tighten to the torque", "Mit Drehmoment anziehen", "Serrer au couple"),
              ("Tighten with the given torque.", "Mit dem angegebenen Drehmoment anziehen.",
               "Serrer au couple indiqué."),
              png=True, tags=[tag("TORQUE", TORQUE, "25", NM), tag("LENGTH", LENGTH, "380", MM)],
              show_description=True),
        image("TOOL_OPEN_WRENCH", "cat-std-tools",
              ("Open-end wrench", "Gabelschlüssel", "Clé plate"),
              ("Use a wrench", "Schraubenschlüssel verwenden", "Utiliser une clé"),
              ("Wrench with the given width across flats.", "Schlüssel mit der angegebenen Schlüsselweite.",
               "Clé de la cote indiquée."), png=True, tags=[tag("LENGTH", ACROSS_FLATS, "16", MM)]),
        image("TOOL_SCREWDRIVER", "cat-std-tools",
              ("Screwdriver", "Schraubendreher", "Tournevis"),
              ("Use a screwdriver", "Schraubendreher verwenden", "Utiliser un tournevis"),
              ("Slotted screwdriver.", "Schlitzschraubendreher.", "Tournevis plat."),
              png=True, tags=[tag("LENGTH", "Blade width", "6.5", "mm")]),
        image("TOOL_HEX_KEY", "cat-std-tools",
              ("Hex key", "Innensechskantschlüssel", "Clé six pans"),
              ("Use a hex key", "Innensechskant verwenden", "Utiliser une clé six pans"),
              ("Key for hexagon socket screws.", "Schlüssel für Innensechskantschrauben.",
               "Clé pour vis à six pans creux."), png=True, tags=[tag("LENGTH", ACROSS_FLATS, "5", MM)]),
        image("TOOL_HAMMER", "cat-std-tools",
              ("Hammer", "Hammer", "Marteau"),
              ("Strike lightly", "Leicht schlagen", "Frapper légèrement"),
              ("Drive in with light blows.", "Mit leichten Schlägen eintreiben.", "Enfoncer à petits coups."),
              png=True),
        image("TOOL_PLIERS", "cat-std-tools",
              ("Pliers", "Zange", "Pince"),
              ("Use pliers", "Zange verwenden", "Utiliser une pince"),
              ("Grip or hold with pliers.", "Mit der Zange greifen oder halten.", "Saisir ou maintenir à la pince."),
              png=True),
        # Consumables
        image("CONSUMABLE_OIL", "cat-std-consumables",
              ("Oil", "Öl", "Huile"), ("Apply oil", "Ölen", "Huiler"),
              ("Apply a thin film of oil.", "Einen dünnen Ölfilm auftragen.", "Appliquer un mince film d'huile."),
              png=True),
        image("CONSUMABLE_GREASE", "cat-std-consumables",
              ("Grease", "Fett", "Graisse"), ("Apply grease", "Fetten", "Graisser"),
              ("Grease with a gun until it comes out.", "Mit der Presse fetten, bis es austritt.",
               "Graisser à la pompe jusqu'au débordement."), png=True),
        image("CONSUMABLE_SEALANT", "cat-std-consumables",
              ("Sealant", "Dichtmasse", "Mastic"), ("Apply sealant", "Abdichten", "Étancher"),
              ("Apply an even bead of sealant.", "Eine gleichmäßige Raupe auftragen.",
               "Déposer un cordon régulier."), png=True, tags=[tag("LENGTH", "Bead width", "2.5", MM)]),
        image("CONSUMABLE_THREAD_LOCKER", "cat-std-consumables",
              ("Thread locker", "Schraubensicherung", "Frein-filet"),
              ("Secure the thread", "Gewinde sichern", "Freiner le filetage"),
              ("Wet the clean, dry thread with thread locker.", "Das saubere, trockene Gewinde benetzen.",
               "Enduire le filetage propre et sec."), png=True,
              tags=[tag("TYPE", KIND, "medium strength")]),
        image("CONSUMABLE_CLEANER", "cat-std-consumables",
              ("Cleaner", "Reiniger", "Nettoyant"), ("Clean", "Reinigen", "Nettoyer"),
              ("Spray on, let act, wipe off.", "Aufsprühen, einwirken lassen, abwischen.",
               "Pulvériser, laisser agir, essuyer."), png=True),
        # Checks
        image("CHECK_EYE", "cat-std-checks",
              ("Visual check", "Sichtprüfung", "Contrôle visuel"), ("Look", "Ansehen", "Regarder"),
              ("Check by eye.", "Mit dem Auge prüfen.", "Contrôler à l'œil."), png=True),
        image("CHECK_MAGNIFIER", "cat-std-checks",
              ("Inspect closely", "Genau prüfen", "Inspecter de près"),
              ("Look for damage", "Auf Schäden prüfen", "Chercher les défauts"),
              ("Look for cracks, wear and dirt.", "Auf Risse, Verschleiß und Schmutz achten.",
               "Rechercher fissures, usure et saletés."), png=True),
        image("CHECK_MEASURE", "cat-std-checks",
              ("Measure", "Messen", "Mesurer"), ("Check the size", "Maß prüfen", "Vérifier la cote"),
              ("Measure with a calliper.", "Mit dem Messschieber messen.", "Mesurer au pied à coulisse."),
              png=True, tags=[tag("LENGTH", LENGTH, "12.5", MM)]),
    ],
    "shapes": [
        shape("SHAPE_ARROW", "cat-std-shapes",
              ("3D arrow", "3D-Pfeil", "Flèche 3D"),
              ("Move this way", "In diese Richtung bewegen", "Déplacer dans ce sens"),
              ("Arrow whose tip touches the picked place.", "Pfeil, dessen Spitze die gewählte Stelle berührt.",
               "Flèche dont la pointe touche l'endroit choisi."), "arrow",
              axis_name="X", orientation_name="Along axis", distance=2.5, camera=True),
        shape("SHAPE_DOUBLE_ARROW", "cat-std-shapes",
              ("3D double arrow", "3D-Doppelpfeil", "Flèche double 3D"),
              ("Move both ways", "In beide Richtungen bewegen", "Déplacer dans les deux directions"),
              ("Arrow with two heads, centred.", "Pfeil mit zwei Spitzen, mittig.",
               "Flèche à deux pointes, centrée."),
              "double_arrow", axis_name="X", orientation_name="Along axis"),
        shape("SHAPE_CURVED_ARROW", "cat-std-shapes",
              ("3D curved arrow", "3D-Bogenpfeil", "Flèche courbe 3D"),
              ("Turn about the axis", "Um die Achse drehen", "Tourner autour de l'axe"),
              ("Three quarters of a turn about the axis.", "Dreiviertelkreis um die Achse.",
               "Trois quarts de tour autour de l'axe."), "curved_arrow",
              axis_name="Z", axis_id=2, orientation_name="Around axis", orientation=1, distance=10, camera=True,
              show_description=True),
        shape("SHAPE_WRENCH", "cat-std-shapes",
              ("3D wrench", "3D-Schraubenschlüssel", "Clé 3D"),
              ("Tighten with a wrench", "Mit Schlüssel anziehen", "Serrer à la clé"),
              ("Combination wrench; the jaw sits on the picked place.",
               "Ringmaulschlüssel; das Maul sitzt auf der Stelle.",
               "Clé mixte ; la mâchoire est sur l'endroit choisi."), "wrench", scale=2.5,
              csys=((1, 0, 0), (0, 1, 0), (0, 0, 1), (-19.5, 0, 0)), axis_name="Z", axis_id=2,
              tags=[tag("TORQUE", TORQUE, "25", NM), tag("LENGTH", ACROSS_FLATS, "16", MM)], annotation=True,
              camera=True),
        shape("SHAPE_BOLT", "cat-std-shapes",
              ("3D bolt", "3D-Schraube", "Vis 3D"),
              ("Bolt M10 × 32", "Schraube M10 × 32", "Vis M10 × 32"),
              ("Hexagon bolt, seat at the picked place.", "Sechskantschraube, Auflage an der Stelle.",
               "Vis à tête hexagonale, appui à l'endroit choisi."), "bolt",
              axis_name="Z", axis_id=2, orientation_name="Along axis",
              tags=[tag("TORQUE", TORQUE, "46", NM), tag("LENGTH", LENGTH, "32", MM), tag("TYPE", KIND, "M10, 8.8")]),
        shape("SHAPE_NUT", "cat-std-shapes",
              ("3D hexagon nut", "3D-Sechskantmutter", "Écrou hexagonal 3D"),
              ("Nut M10", "Mutter M10", "Écrou M10"),
              ("Hexagon nut, seat at the picked place.", "Sechskantmutter, Auflage an der Stelle.",
               "Écrou hexagonal, appui à l'endroit choisi."), "hex_nut", axis_name="Z", axis_id=2,
              tags=[tag("TORQUE", TORQUE, "46", NM), tag("LENGTH", ACROSS_FLATS, "16", MM)]),
        shape("SHAPE_OIL_DROP", "cat-std-shapes",
              ("3D oil drop", "3D-Öltropfen", "Goutte d'huile 3D"),
              ("Lubricate here", "Hier schmieren", "Lubrifier ici"),
              ("Drop that falls on the place to lubricate.", "Tropfen, der auf die Schmierstelle fällt.",
               "Goutte qui tombe sur le point à lubrifier."), "oil_drop", scale=0.75, distance=4, axis_name="Z",
              axis_id=2, current_orientation=True, camera=True),
        shape("SHAPE_CONE_MARKER", "cat-std-shapes",
              ("3D cone marker", "3D-Kegelmarke", "Repère conique 3D"),
              ("Marked place", "Markierte Stelle", "Endroit repéré"),
              ("Marker that stands on its tip.", "Marke, die auf ihrer Spitze steht.", "Repère posé sur sa pointe."),
              "cone_marker", current_orientation=True, tooltip="Marker"),
        shape("SHAPE_RING_MARKER", "cat-std-shapes",
              ("3D ring marker", "3D-Ringmarke", "Repère annulaire 3D"),
              ("Marked circle", "Markierter Kreis", "Cercle repéré"),
              ("Ring around a hole, a bolt or a connector.", "Ring um eine Bohrung, Schraube oder Steckstelle.",
               "Anneau autour d'un trou, d'une vis ou d'un connecteur."), "ring_marker", scale=1.25,
              csys=((1, 0, 0), (0, 0.866025, -0.5), (0, 0.5, 0.866025), (0, 0, 3)), edit_method=2,
              tags=[tag("LENGTH", DIAMETER, "44", MM)]),
    ],
}

for digit in range(1, 10):
    STANDARD["images"].insert(
        14 + digit,
        image(f"STEP_{digit}", "cat-std-steps", (f"Step {digit}", f"Schritt {digit}", f"Étape {digit}"),
              (f"Work step {digit}", f"Arbeitsschritt {digit}", f"Opération {digit}"),
              (f"Number {digit} of the work steps.", f"Nummer {digit} der Arbeitsschritte.",
               f"Numéro {digit} des étapes de travail."), svg_thumbnails=digit <= 3))


# ----------------------------------------------------------------------------------------------- the user's own library

USER = {
    "path": "SymbolsLibrary/PartSymbolLibrary.xml",
    "folder": "SymbolsLibrary",
    "units": "mm",
    "information": "My symbols: marks & notes for \"first draft\" pages",
    "categories": [
        ("cat-usr-marks", "My marks", "Marks for reviews <draft>", "Done, wrong, wait & look here."),
        ("cat-usr-shapes", "My shapes", "Own 3D symbols", ""),
    ],
    "images": [
        image("MARK_DONE", "cat-usr-marks", "Done", "Done", "The step is finished.", png=True),
        image("MARK_WRONG", "cat-usr-marks", "Wrong", "Don't do it like this",
              "Shows a wrong way, for example \"bent pin\" or gap > 1 mm.", png=True, show_description=True),
        image("MARK_WAIT", "cat-usr-marks",
              ("Waiting time", "Wartezeit", "Temps d'attente"), "Wait", "Let the sealant cure.", png=True,
              tags=[tag("TYPE", "Curing time", "20", "min")]),
        image("MARK_DETAIL", "cat-usr-marks", "Detail frame", "See detail", "The circle is shown larger elsewhere.",
              scale=150, tooltip="Frame & pointer"),
        image("MARK_PIN", "cat-usr-marks", "Place pin", "Here", "", billboard=True, show_title=False),
    ],
    "shapes": [
        shape("SHAPE_SCREWDRIVER", "cat-usr-shapes", "3D screwdriver", "Turn the screw",
              "Slotted screwdriver; the blade sits in the screw's slot.", "screwdriver", axis_name="Z", axis_id=2,
              distance=0.5, csys=((0, -1, 0), (1, 0, 0), (0, 0, 1), (0, 0, 0)),
              tags=[tag("LENGTH", "Blade width", "6.8", "mm")], camera=True),
        shape("SHAPE_WASHER", "cat-usr-shapes", "3D washer", "Washer 10.5", "Plain washer, 3 mm thick.", "washer",
              axis_name="Z", axis_id=2, edit_method=0,
              tags=[tag("LENGTH", "Diameter < hole pitch", "24", MM)]),
    ],
}


# -------------------------------------------------------------------------------------------------- the team's library

SHARED = {
    "path": "shared/SymbolsLibrary/PartSymbolLibrary.xml",
    "folder": "shared/SymbolsLibrary",
    "units": "mm",
    "information": "Symbols of the service team",
    "categories": [
        ("cat-team-safety", "Team safety", "Agreed safety symbols", "Use these in every manual of the team."),
        ("cat-team-work", ("SYM_CAT_TEAM_WORK", ("Team work steps", "Arbeitsschritte im Team", "Étapes de l'équipe")),
         "Agreed work symbols", ""),
        ("cat-team-shapes", "Team shapes", "Agreed 3D symbols", ""),
    ],
    "images": [
        image("TEAM_LOCKOUT", "cat-team-safety", "Lock out", "Lock out the main switch",
              "Lock the switch and keep the key.", show_description=True),
        image("TEAM_BATTERY_OFF", "cat-team-safety", "Disconnect battery", "Disconnect the battery",
              "Take the clamp off the minus pole first.", show_description=True),
        image("TEAM_TWO_PEOPLE", "cat-team-safety",
              ("Lift in pairs", "Zu zweit heben", "Lever à deux"), "Two people", "Heavy part: lift it with a helper.",
              png=True, tags=[tag("TYPE", "Mass", "38", "kg")]),
        image("TEAM_REPLACE", "cat-team-work",
              ("Replace part", "Teil ersetzen", "Remplacer la pièce"), "Use a new part",
              "Do not use the old part again.", svg_thumbnails=True, tooltip="New part"),
        image("TEAM_TEMPERATURE", "cat-team-work", "Check temperature", "Measure the temperature",
              "Wait until the part is warm.", png=True, scale=75, tags=[tag("TYPE", "Temperature", "60", "°C")]),
        image("TEAM_DISPOSE", "cat-team-work", "Dispose of oil", "Collect used oil",
              "Collect used oil & hand it in.", png=True),
    ],
    "shapes": [
        shape("SHAPE_GRIPPER", "cat-team-shapes", "3D gripper", "Grip here", "Two-jaw gripper, closes along y.",
              "gripper", axis_name="Z", axis_id=2, orientation_name="Against axis", orientation=2,
              csys=((0.707107, -0.707107, 0), (0.707107, 0.707107, 0), (0, 0, 1), (0, 0, 0)), camera=True,
              annotation=True),
        shape("SHAPE_HOOK", "cat-team-shapes",
              ("3D lifting hook", "3D-Lasthaken", "Crochet de levage 3D"), "Lift here",
              "Attach the hook to this point.", "hook", scale=1.5, distance=12.5, axis_name="Z", axis_id=2,
              tags=[tag("TYPE", "Load", "250", "kg")], camera=True),
    ],
}

DOCUMENTS = (STANDARD, USER, SHARED)
