INSERT INTO Items(json)
SELECT '{"SessionId": "0A1B2C3D-0000-4000-8000-000000000001", "InstallationId": "office 4", "Timestamp": "2026-11-21T'
       || column1 || 'Z", "Category": ' || column2 || '}'
  FROM (VALUES ('09:43:00.000', '"Application", "Subcategory": "Started", "Event": "After a crash"'),
               ('09:44:00.000', '"Command", "Subcategory": "Started", "Event": "Print plan"'),
               ('09:45:00.000', '"Application", "Subcategory": "Stopped", "Event": "Menu"'));
